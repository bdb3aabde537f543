// That the example server does what its document says: renderers, a logger factory and every kind of layout together.

#include "tests/support/Tests.h"

using namespace vrktest;

TEST(ExampleServerTest, LogsWhatItsDocumentSays) {
  const TempDir dir;
  std::filesystem::create_directory(dir.file("log"));
  const auto inDirectory = [&](const std::string& command) {
    return std::system(("cd '" + dir.path() + "' && " + command).c_str());
  };
  const std::string server = "/examples/server/";
  // It ends badly when its loggers are not of the factory's class.
  ASSERT_EQ(inDirectory("timeout 60 '" LOG4VRK_BINARY_DIR + server + "orders' '" LOG4VRK_SOURCE_DIR + server +
                        "log.xml' '" LOG4VRK_SOURCE_DIR + server + "orders.csv' >console.txt"),
            0);

  const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2},[0-9]{3} ";
  const std::string step = " order [0-9]{4} \\([0-9]+ x [a-z]+ for [A-Z][a-z]+\\)$";
  const std::pair<const char*, std::string> PATTERNS[] = {
      {"log/audit.log", "^order=[0-9]{4} customer=[A-Z][a-z]+ article=[a-z]+ quantity=[0-9]+$"},
      {"log/grinders.log", "grinder"},
      {"log/problems.log", "^" + time + "\\[[^]]+\\] (WARN|ERROR) shop\\."},
      {"console.txt", "^[0-9:]{8},[0-9]{3} \\[[^]]+\\] (INFO|WARN|ERROR) shop"},
      {"log/orders.log*", "^" + time + "(DEBUG \\[[^]]+\\] ( {8} orders.intake - read|worker [123] orders.worker - " +
                              "(working on|done with))" + step + "|WARN  \\[[^]]+\\] {10}orders.intake - line 18 is)"},
  };
  for (const auto& [files, pattern] : PATTERNS) {
    EXPECT_EQ(inDirectory("cat " + std::string(files) + " | LC_ALL=C grep -qE '" + pattern + "'"), 0) << files;
    EXPECT_NE(inDirectory("cat " + std::string(files) + " | LC_ALL=C grep -vE '" + pattern + "'"), 0) << files;
  }
  EXPECT_TRUE(std::filesystem::exists(dir.file("log/orders.log.1")));
  const long problems = static_cast<long>(linesOf(dir.file("log/problems.log")).size());
  EXPECT_GT(problems, 1);
  EXPECT_EQ(inDirectory("test $(grep -c '<td title=\"Level\">' log/problems.html) = " + std::to_string(problems)), 0);
  dir.write("events.xml", "<events xmlns:log4j='x'>" + dir.read("log/problems.xml") + "</events>");
  const VRKIDOM_Document events = VRKIDOM_Parser().parse(dir.file("events.xml").c_str());
  EXPECT_EQ(events.getElementsByTagName("log4j:event").getLength(), problems);
}
