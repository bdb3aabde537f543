#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

struct ProblemsTest : testing::Test {
  // The problems of a document, "$" being its file, and of what the internal log has of them.
  std::string problemsOf(const std::string& document, int result = 1) {
    const std::string path = dir.write("log.xml", document);
    const InternalLog log;
    EXPECT_EQ(result, LOG4VRKConfigurator::initialize(path.c_str())) << document;
    const std::string problems = LOG4VRKConfigurator::getProblems().toUtf8();
    const long lines = std::count(problems.begin(), problems.end(), '\n');
    EXPECT_EQ(lines, log.count("log4vrk:WARN ") + log.count("log4vrk:ERROR ")) << log.text();
    return replaced(problems, path, "$");
  }
  std::string configuration(const std::string& content) {
    return "<log4j:configuration>\n" + content + "</log4j:configuration>";
  }

  TempDir dir;
};

TEST_F(ProblemsTest, AreTheRunsWarningsAndErrorsWithTheirPlace) {
  const std::string file = "\n <param name='File' value='" + dir.file("f.log") + "'/>\n <layout class='SimpleLayout'/>";
  // Document, and how each of its lines begins and what it has behind that.
  const std::pair<std::string, std::vector<std::pair<const char*, const char*>>> CASES[] = {
      {"<root>\n\n <level value='inherited'/></root>", {{"$:4: root: ", "Root level cannot be inherited."}}},
      {"<logger name='p.a'>\n<appender-ref ref='no'/></logger>\n<logger name='p.b'><appender-ref ref='no'/></logger>",
       {{"$:3: logger [p.a]: ", "No appender named [no]"}, {"$:4: logger [p.b]: ", "No appender named [no]"}}},
      {"<appender name='F' class='FileAppender'>" + file +
           "\n <errorHandler class='Only'>\n <appender-ref\n ref='no'/></errorHandler><appender-ref ref='no'/>"
           "</appender><root><appender-ref ref='F'/></root>",
       {{"$:5: appender [F]: ", "generic error handler"},
        {"$:6: appender [F]: ", "No appender named [no]"},
        {"$:7: appender [F]: ", "does not implement LOGAppenderAttachable"}}},
      {"<appender name='P' class='ConsoleAppender'><layout class='PatternLayout'>\n\n"
       "<param name='ConversionPattern' value='%y'/></layout></appender><root><appender-ref ref='P'/></root>",
       {{"$:4: appender [P], param [ConversionPattern]: ", "%y"}}},
      {"<renderer renderingClass='NoRenderer' renderedClass='X'/>",
       {{"$:2: renderer [NoRenderer]: ", "Could not instantiate renderer"}}},
      {"<logger name='q' class='Own'/>", {{"$:2: logger [q]: ", "Logger Factory missing"}}},
  };
  for (const auto& [content, expected] : CASES) {
    std::istringstream lines(problemsOf(configuration(content)));
    std::vector<std::string> found;
    for (std::string line; std::getline(lines, line);) found.push_back(line);
    ASSERT_EQ(expected.size(), found.size()) << content << (found.empty() ? "" : "\n" + found[0]);
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_EQ(0U, found[i].find(expected[i].first)) << content << "\n" << found[i];
      EXPECT_NE(std::string::npos, found[i].find(expected[i].second)) << content << "\n" << found[i];
    }
  }
}

// A layout prints what has become of a value.
TEST_F(ProblemsTest, NameTheVariablesThatCannotBePutInAndTheOthersAreOnce) {
  ::setenv("LOG4VRK_TEST_SET", "set", 1);
  ::setenv("LOG4VRK_TEST_EMPTY", "", 1);
  ::setenv("LOG4VRK_TEST_BOTH", "of the environment", 1);
  LOG4VRKConfigurator::setVariable("LOG4VRK_TEST_BOTH", "of the program");
  LOG4VRKConfigurator::setVariable("own.name", "${LOG4VRK_TEST_SET} %m $${");
  const std::tuple<const char*, const char*, const char*> CASES[] = {
      {"${LOG4VRK_TEST_SET}", "set", ""},
      {"a${LOG4VRK_TEST_SET}b${LOG4VRK_TEST_SET}", "asetbset", ""},
      {"${LOG4VRK_TEST_BOTH}", "of the program", ""},
      {"${own.name}", "${LOG4VRK_TEST_SET} text $${", ""},
      {"${LOG4VRK_TEST_NONE:-a:-b c}", "a:-b c", ""},
      {"[${LOG4VRK_TEST_NONE:-}]", "[]", ""},
      {"${LOG4VRK_TEST_EMPTY:-default}", "default", ""},
      {"${LOG4VRK_TEST_SET:-default}", "set", ""},
      {"$ $$ } {x} $x $${a} $$${a}", "$ $$ } {x} $x ${a} $${a}", ""},
      {"a${LOG4VRK_TEST_NONE}", "-", "${LOG4VRK_TEST_NONE} is not set and has no default"},
      {"${LOG4VRK_TEST_EMPTY}", "-", "${LOG4VRK_TEST_EMPTY} is not set and has no default"},
      {"${LOG4VRK_TEST_SET", "-", "${ without }"},
      {"${}", "-", "${}: a name has letters, digits, _ and . only"},
      {"${A-B}", "-", "${A-B}: a name has letters, digits, _ and . only"},
      {"${A:-${B}}", "-", "${A}: a default has no variables in it"},
  };
  const auto written = [&](const std::string& value, const char* substitute, std::string& problems) {
    problems = problemsOf("<log4j:configuration substitute='" + std::string(substitute) +
                          "'>\n<appender name='f' class='FileAppender'><param name='File' value='" + dir.file("f") +
                          "'/><layout class='PatternLayout'><param name='ConversionPattern' value='-'/>\n"
                          "<param name='ConversionPattern' value='" +
                          value + "'/></layout></appender><root><appender-ref ref='f'/></root></log4j:configuration>");
    LOGManager::getRootLogger()->error("text");
    std::string text = dir.read("f");
    dir.write("f", "");
    return text;
  };
  std::string problems;
  for (const auto& [value, expected, problem] : CASES) {
    EXPECT_EQ(expected, written(value, "true", problems)) << value;
    const std::string line = *problem != '\0' ? "$:3: appender [f], param [ConversionPattern]: "
                                                "LOGDOMConfigurator::setParameter -- " +
                                                    std::string(problem) + "; the parameter is ignored.\n"
                                              : "";
    EXPECT_EQ(line, problems);
  }
  EXPECT_EQ("${LOG4VRK_TEST_SET}", written("${LOG4VRK_TEST_SET}", "false", problems)) << "nobody has asked";
  EXPECT_EQ("${LOG4VRK_TEST_SET}", written("${LOG4VRK_TEST_SET}", "yes", problems));
  EXPECT_NE(std::string::npos, problems.find("The \"substitute\" attribute is [yes], neither true nor false"));
  LOG4VRKConfigurator::setVariable("LOG4VRK_TEST_BOTH", "");
  EXPECT_EQ("of the environment", written("${LOG4VRK_TEST_BOTH}", "TRUE", problems));
  const InternalLog log;
  LOG4VRKConfigurator::setVariable("a b", "x");
  EXPECT_TRUE(log.contains("[a b] is no name"));
  LOGManager::getRootLogger()->removeAllAppenders();
}

TEST_F(ProblemsTest, NameTheVariableOfALevelWhichStaysAsItWas) {
  LOGLogger* const logger = LOGManager::getLogger("p.level");
  const auto levelWith = [&](const char* value) {
    const std::string problems =
        problemsOf("<log4j:configuration substitute='true'><logger name='p.level'><level value='" + std::string(value) +
                   "'/></logger></log4j:configuration>");
    return logger->getLevel()->toString().toUtf8() + ", " + problems;
  };
  LOG4VRKConfigurator::setVariable("LOG4VRK_TEST_LEVEL", "warn");
  EXPECT_EQ("WARN, ", levelWith("${LOG4VRK_TEST_LEVEL}"));
  LOG4VRKConfigurator::setVariable("LOG4VRK_TEST_LEVEL", "");
  EXPECT_EQ("ERROR, ", levelWith("${LOG4VRK_TEST_LEVEL:-ERROR}"));
  EXPECT_EQ(
      "ERROR, $:1: logger [p.level]: LOGDOMConfigurator::parseLevel -- ${LOG4VRK_TEST_LEVEL} is not set and has no "
      "default; the level stays as it was.\n",
      levelWith("${LOG4VRK_TEST_LEVEL}"));
}

TEST_F(ProblemsTest, TellWhyADocumentWasNotApplied) {
  EXPECT_EQ(0U, problemsOf("<a>\n<b></a>", 0).find("$:2: Could not parse the document ")) << "the line of the fault";
  EXPECT_EQ(0U, problemsOf("<other/>", 0).find("$:1: DOM element is - not a "));
  EXPECT_EQ(0U, problemsOf(configuration("\n<categoryFactory class='NoSuchFactory'/>"), 0)
                    .find("$:3: categoryFactory: LOGDOMConfigurator::doConfigure -- "))
      << "told outside of the element, and still with its line";
  EXPECT_EQ("", problemsOf(configuration(""))) << "each run begins anew";
  EXPECT_EQ(0, LOGDOMConfigurator::configure(
                   VRKIDOM_DOMImplementation::getImplementation().createDocument().createElement("other")));
  EXPECT_EQ(0U, LOG4VRKConfigurator::getProblems().toUtf8().find("DOM element is")) << "it has no file";
}

// What other threads and put-off log calls write meanwhile is not the run's; the text can be asked for at any time.
TEST_F(ProblemsTest, AreNotMixedWithThoseOfOthers) {
  const std::string path = dir.write("log.xml", configuration("<root><level value='inherited'/></root>"));
  const Meanwhile others(
      {[] { LOGLogLog::error("noise"); },
       [] { EXPECT_EQ(std::string::npos, LOG4VRKConfigurator::getProblems().toUtf8().find("noise")); }});
  for (int i = 0; i < 50; ++i) {
    EXPECT_EQ(1, LOG4VRKConfigurator::initialize(path.c_str()));
    EXPECT_EQ(path + ":2: root: Root level cannot be inherited. Ignoring directive.\n",
              LOG4VRKConfigurator::getProblems().toUtf8());
  }
}

}  // namespace
