// What belongs to whole processes: crashes, several of them on one file, and what is left after many configurations.

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

const std::string PROGRAMS = LOG4VRK_TEST_PROGRAM_DIR;

TEST(Crash, NoEventIsLostWhoseLogCallHadReturned) {
  const TempDir dir;
  const std::string document = fileDocument(dir);
  std::mt19937 random(20261121);
  for (int kill = 0; kill < 100; ++kill) {
    dir.write("all.log", "");
    const std::string counter = dir.write("counter", std::string(sizeof(long), '\0'));
    const pid_t child = startProgram({PROGRAMS + "/crash_probe", document, counter});
    const auto returned = [&] {
      long value = 0;
      std::ifstream(counter, std::ios::binary).read(reinterpret_cast<char*>(&value), sizeof value);
      return value;
    };
    ASSERT_TRUE(eventually([&] { return returned() > 0; }));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
    ::kill(child, SIGKILL);
    ASSERT_EQ(-SIGKILL, statusOf(child)) << "the program ended by itself";
    const long count = returned();
    ASSERT_GT(count, 0);
    std::vector<std::string> lines = linesOf(dir.file("all.log"));
    // The kernel ends a write of a killed process at the end of a page.
    if (!lines.empty() && dir.read("all.log").back() != '\n') lines.pop_back();
    ASSERT_GE(static_cast<long>(lines.size()), count);
    expectEachOnceInOrder(lines, 1, static_cast<long>(lines.size()));
  }
}

TEST(Processes, WriteWholeLinesIntoOneFile) {
  constexpr int PROCESSES = 4;
  constexpr long EACH = 5000;
  const TempDir dir;
  const std::string document = fileDocument(dir);
  std::vector<pid_t> children;
  for (int p = 0; p < PROCESSES; ++p) {
    const pid_t child = ::fork();
    if (child == 0) {
      LOG4VRKConfigurator::initialize(document.c_str());
      LOGLogger* const logger = LOGManager::getLogger("process");
      for (long n = 1; n <= EACH; ++n) LOG4VRK_INFO(logger, p << " " << n << " end");
      LOG4VRKConfigurator::shutdown();
      ::_exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) ASSERT_EQ(0, statusOf(child));
  expectEachOnceInOrder(linesOf(dir.file("all.log")), PROCESSES, EACH);
}

// Every kind of object that a document can make. The sanitizer build sees what is not freed at the end.
TEST(Cycles, LeaveNothingBehind) {
  const TempDir dir;
  std::string appenders, references;
  for (const char* kind : {"FileAppender", "RollingFileAppender", "ConsoleAppender"}) {
    appenders +=
        "<appender name='" + std::string(kind) + "' class='" + kind + "'><param name='File' value='" + dir.file(kind) +
        "'/><param name='MaximumFileSize' value='100'/><layout class='TTCCLayout'><param name='DateFormat' value='%H'/>"
        "<param name='TimeZone' value='Asia/Tokyo'/></layout><layout class='SimpleLayout'/>"
        "<filter class='LevelRangeFilter'><param name='LevelMin' value='WARN'/></filter><filter "
        "class='StringMatchFilter'/>"
        "<errorHandler class='LOGOnlyOnceErrorHandler'/><errorHandler class='Generic'><appender-ref "
        "ref='FileAppender'/>"
        "<logger-ref ref='cycle'/><root-ref/></errorHandler></appender>";
    references += "<appender-ref ref='" + std::string(kind) + "'/>";
  }
  const std::string document =
      dir.write("log.xml", "<log4j:configuration>" + appenders + "<logger name='cycle.a'>" + references +
                               "</logger><root>" + references + "</root></log4j:configuration>");
  const std::string out = dir.file("out");
  ASSERT_EQ(0, std::system((PROGRAMS + "/cycle_probe " + document + " 1000 >" + out).c_str()));
  long early[2], late[2];
  std::ifstream(out) >> early[0] >> early[1] >> late[0] >> late[1];
  EXPECT_EQ(early[0], late[0]) << "open descriptors";
  EXPECT_LE(late[1], early[1] + 4096) << "bytes in use";
}

}  // namespace
