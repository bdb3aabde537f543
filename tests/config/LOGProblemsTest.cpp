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
