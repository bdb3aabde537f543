// The factory libraries that a document names. A factory stays for later documents, so the order of the runs matters.

#include "tests/support/Tests.h"

using namespace vrktest;

TEST(FactoryLibrariesTest, MakeTheLoggersOfADocument) {
  VRKConfigurationFactory::getInstance().addLibraryDirectory(LOG4VRK_TEST_PROGRAM_DIR);
  const std::string factory = "<categoryFactory class='org.example.CountingFactory'/>";
  const std::string failed = "log4vrk:ERROR LOGDOMConfigurator::doConfigure -- some VRKThrowable exception occurred ";
  // The class of the logger is null when the document ends before it.
  const std::tuple<std::string, std::string, std::string, const char*> RUNS[] = {
      {"f.missing", "<categoryFactory class='org.example.Missing'/>", failed, nullptr},
      {"f.without", "<categoryFactory class='NoFunction'/>", failed, nullptr},
      {"f.empty", "<categoryFactory/>", "log4vrk:ERROR Category Factory tag class attribute not found.\n", ""},
      {"f.first", factory, "log4vrk: Desired category factory: [CountingFactory]\n", "Counted1"},
      {"f.again", factory, "log4vrk: Desired logger sub-class: [Counted]\n", "Counted1"},
      {"f.later", "", "log4vrk: Desired logger sub-class: [Counted]\n", "Counted1"},
      {"f.failed", "<categoryFactory class='Missing'/>", failed, nullptr},
  };
  const TempDir dir;
  for (const auto& [name, content, line, madeClass] : RUNS) {
    SCOPED_TRACE(name);
    const InternalLog log;
    // The factory counts for the loggers that stand before it.
    std::string document = replaced("<log4j:configuration><logger name='@' class='my.Counted'/>", "@", name);
    document.append(content).append("</log4j:configuration>");
    EXPECT_EQ(LOG4VRKConfigurator::initialize(dir.write("log.xml", document).c_str()), madeClass != nullptr);
    EXPECT_NE(log.text().find(line), std::string::npos) << log.text();
    LOGLogger* const logger = LOGManager::exists(name.c_str());
    EXPECT_EQ(logger != nullptr ? logger->instanceOf() : "", madeClass != nullptr ? madeClass : "");
    EXPECT_TRUE(logger == nullptr || LOGManager::getLogger(name.c_str()) == logger);
  }
}
