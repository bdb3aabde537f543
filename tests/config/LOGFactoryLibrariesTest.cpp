// The libraries that a document names. A factory stays for later documents, so that the order of these runs matters.

#include "tests/support/Tests.h"

using namespace vrktest;

TEST(FactoryLibrariesTest, MakeTheLoggersOfADocument) {
  VRKConfigurationFactory::getInstance().addLibraryDirectory(LOG4VRK_TEST_PROGRAM_DIR);
  const std::string factory = "<categoryFactory class='org.example.CountingFactory'/>";
  const std::string failed = "log4vrk:ERROR LOGDOMConfigurator::doConfigure -- some VRKThrowable exception occurred ";
  const struct {
    const char* name;
    std::string content, line;
    const char* madeClass;  // null when the document ends before the logger
  } RUNS[] = {
      {"f.missing", "<categoryFactory class='org.example.Missing'/>", failed, nullptr},
      {"f.without", "<categoryFactory class='NoFunction'/>", failed, nullptr},
      {"f.empty", "<categoryFactory/>", "log4vrk:ERROR Category Factory tag class attribute not found.\n", ""},
      {"f.first", factory, "log4vrk: Desired category factory: [CountingFactory]\n", "Counted1"},
      {"f.again", factory, "log4vrk: Desired logger sub-class: [Counted]\n", "Counted1"},
      {"f.later", "", "log4vrk: Desired logger sub-class: [Counted]\n", "Counted1"},
      {"f.failed", "<categoryFactory class='Missing'/>", failed, nullptr},
      {"f.renderer", "<renderer renderingClass='a.Missing' renderedClass='b.Thing'/>",
       "log4vrk: Rendering class: [Missing], Rendered class: [Thing].\n"
       "log4vrk:ERROR Could not instantiate renderer [Missing].\n",
       "Counted1"},
  };
  const TempDir dir;
  for (const auto& run : RUNS) {
    SCOPED_TRACE(run.name);
    const InternalLog log;
    // The factory counts for the loggers that stand before it.
    const std::string document = "<log4j:configuration><logger name='" + std::string(run.name) +
                                 "' class='my.Counted'/>" + run.content + "</log4j:configuration>";
    EXPECT_EQ(LOG4VRKConfigurator::initialize(dir.write("log.xml", document).c_str()), run.madeClass != nullptr);
    EXPECT_NE(log.text().find(run.line), std::string::npos) << log.text();
    LOGLogger* const logger = LOGManager::exists(run.name);
    EXPECT_EQ(logger != nullptr ? logger->instanceOf() : "", run.madeClass != nullptr ? run.madeClass : "");
    EXPECT_TRUE(logger == nullptr || LOGManager::getLogger(run.name) == logger);
  }
}
