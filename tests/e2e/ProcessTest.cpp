// What concerns whole processes: crashes, several processes on one file, and what many configurations leave behind.

#include <malloc.h>

#include "tests/support/Load.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

using Crash = BothWays;
using Processes = BothWays;
LOG4VRK_ON_BOTH_WAYS(Crash);
LOG4VRK_ON_BOTH_WAYS(Processes);

TEST_P(Crash, NoEventIsLostWhoseLogCallHadReturned) { killWhileLogging(GetParam(), 50); }

TEST_P(Processes, WriteWholeLinesIntoOneFile) {
  const TempDir dir;
  const std::string document = fileDocument(dir, GetParam());
  std::vector<pid_t> children;
  for (int p = 0; p < 4; ++p) {
    children.push_back(startChild([&] {
      LOG4VRKConfigurator::initialize(document.c_str());
      logNumbers("process", GetParam(), p, 5000);
      LOG4VRKConfigurator::shutdown();
    }));
  }
  for (const pid_t child : children) ASSERT_EQ(0, statusOf(child));
  expectEachOnceInOrder(linesOf(dir.file("all.log")), 4, 5000);
}

// Every kind of object that a document can make. The sanitizer build sees what is not freed at the end.
TEST(Cycles, LeaveNothingBehind) {
  const TempDir dir;
  std::string appenders, references;
  for (const char* kind : {"FileAppender", "RollingFileAppender", "ConsoleAppender"}) {
    appenders += replaced(R"(<appender name="@KIND@" class="@KIND@">
      <param name="File" value="@DIR@/@KIND@"/><param name="MaximumFileSize" value="100"/>
      <layout class="TTCCLayout"><param name="DateFormat" value="%H"/>
        <param name="TimeZone" value="Asia/Tokyo"/></layout>
      <layout class="SimpleLayout"/>
      <filter class="LevelRangeFilter"><param name="LevelMin" value="WARN"/></filter><filter class="StringMatchFilter"/>
      <errorHandler class="LOGOnlyOnceErrorHandler"/>
      <errorHandler class="Generic"><appender-ref ref="FileAppender"/>
        <logger-ref ref="cycle"/><root-ref/></errorHandler>
    </appender>)",
                          "@KIND@", kind);
    references += "<appender-ref ref='" + std::string(kind) + "'/>";
  }
  const std::string document = dir.write("log.xml", "<log4j:configuration>" + replaced(appenders, "@DIR@", dir.path()) +
                                                        "<logger name='cycle.a'>" + references + "</logger><root>" +
                                                        references + "</root></log4j:configuration>");
  long descriptors = 0;
  std::size_t bytes = 0;
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
    LOGNDC::push("a text that is too long for a string's own buffer");
    LOGManager::getLogger("cycle.a")->info("cycle");
    LOGNDC::pop();
    LOG4VRKConfigurator::shutdown();
    if (i == 100) {
      descriptors = openDescriptors();
      bytes = ::mallinfo2().uordblks;
    }
  }
  EXPECT_EQ(descriptors, openDescriptors());
  EXPECT_LE(::mallinfo2().uordblks, bytes + 4096);
}

}  // namespace
