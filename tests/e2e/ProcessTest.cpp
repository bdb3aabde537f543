// What concerns whole processes: crashes, several processes on one file, and what many configurations leave behind.

#include <dlfcn.h>
#include <malloc.h>

#include <set>

#include "tests/support/Load.h"
#include "tests/support/ScriptedLogServer.h"
#include "tests/support/Tests.h"

using namespace vrktest;

struct addrinfo;

// Stands in for the system's, which it calls: one name takes its time.
extern "C" int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** found) {
  static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
  const bool slow = host != nullptr && std::string(host) == "slow.example";
  if (slow) std::this_thread::sleep_for(std::chrono::seconds(5));
  return real(slow ? "127.0.0.1" : host, service, hints, found);
}

namespace {

using Crash = BothWays;
using Processes = BothWays;
LOG4VRK_ON_BOTH_WAYS(Crash);
LOG4VRK_ON_BOTH_WAYS(Processes);

TEST_P(Crash, NoEventIsLostWhoseLogCallHadReturned) { killWhileLogging(GetParam(), 50); }

TEST_P(Processes, WriteWholeLinesIntoOneFile) {
  const TempDir dir;
  const std::string document = fileDocument(dir, GetParam());
  pid_t children[4];
  for (int p = 0; p < 4; ++p) {
    children[p] = startChild([&] {
      LOG4VRKConfigurator::initialize(document.c_str());
      logNumbers("process", GetParam(), p, 5000);
      LOG4VRKConfigurator::shutdown();
    });
  }
  for (const pid_t child : children) ASSERT_EQ(0, statusOf(child));
  expectEachOnceInOrder(linesOf(dir.file("all.log")), 4, 5000);
}

using Clock = std::chrono::steady_clock;
constexpr int EVENTS = 20000;

struct Ending {
  const char* name;
  enum { MAIN, LOG_CALL, DISPATCHER, AFTER_A_CHILD } from;
  bool sinkIsStuck;
  std::chrono::milliseconds atMost;
};

void PrintTo(const Ending& ending, std::ostream* out) { *out << ending.name; }

// Logs through two queues, one behind the other, into a file, and directly into a file with a buffer; ends without a
// shutdown.
void logAndExit(const TempDir& dir, const Ending& ending, std::atomic<Clock::duration>& began) {
  LOGLayout layout;
  LOGFileAppender queued(&layout, dir.file("queued").c_str());
  LOGFileAppender buffered(&layout, dir.file("buffered").c_str(), 0, 1, 1 << 20);
  RecordingAppender other;
  LOGAsyncAppender inner, outer, beforeOther;
  LOGLogger* const logger = LOGManager::getLogger("exit");
  LOGLogger* const otherLogger = LOGManager::getLogger("other");
  for (LOGAsyncAppender* queue : {&inner, &outer}) queue->setBufferSize(EVENTS);
  inner.addAppender(&queued);
  outer.addAppender(&inner);
  logger->addAppender(&outer);
  logger->addAppender(&buffered);
  beforeOther.addAppender(&other);

  std::atomic<bool> stuck{false}, ready{false};
  const auto exit = [&] {
    began = Clock::now().time_since_epoch();
    std::exit(0);
  };
  other.onAppend = [&](const std::string&) {
    stuck = true;
    while (!ready) ::usleep(100);
    exit();
  };
  if (ending.from != Ending::LOG_CALL) otherLogger->addAppender(&beforeOther);
  if (ending.sinkIsStuck || ending.from == Ending::DISPATCHER) {
    otherLogger->info("stuck");
    EXPECT_TRUE(eventually([&] { return stuck.load(); }));
  }
  for (int n = 1; n <= EVENTS; ++n) logNumber(logger, Way::FAST, 0, n);
  if (ending.from == Ending::AFTER_A_CHILD) {
    EXPECT_EQ(0, statusInChild(exit));
    EXPECT_LT(Clock::now().time_since_epoch() - began.load(), std::chrono::seconds(1));
  }
  if (ending.from == Ending::MAIN || ending.from == Ending::AFTER_A_CHILD) exit();
  ready = true;
  if (ending.from == Ending::DISPATCHER) ::pause();
  otherLogger->addAppender(&other);
  otherLogger->info("exit");
}

struct Exit : testing::TestWithParam<Ending> {};

TEST_P(Exit, WithoutAShutdownLosesNothingAndTakesTwoSecondsAtMost) {
#if defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the thread sanitizer sleeps for a second at exit; the other builds run this";
#elif defined(__SANITIZE_ADDRESS__)
  if (GetParam().from == Ending::AFTER_A_CHILD) GTEST_SKIP() << "the sanitizers are not made for such forks";
#endif
  const TempDir dir;
  auto& began = sharedWithChildren<std::atomic<Clock::duration>>();
  EXPECT_EQ(0, statusInChild([&] { logAndExit(dir, GetParam(), began); }));
  EXPECT_LT(Clock::now().time_since_epoch() - began.load(), GetParam().atMost);
  for (const char* file : {"queued", "buffered"}) expectEachOnceInOrder(linesOf(dir.file(file)), 1, EVENTS);
}

constexpr std::chrono::milliseconds SOON{1000}, TWO_SECONDS{2500};
INSTANTIATE_TEST_SUITE_P(Endings, Exit,
                         testing::Values(Ending{"main", Ending::MAIN, false, SOON},
                                         Ending{"log_call", Ending::LOG_CALL, false, SOON},
                                         Ending{"dispatcher", Ending::DISPATCHER, false, SOON},
                                         Ending{"after_a_child", Ending::AFTER_A_CHILD, false, SOON},
                                         Ending{"stuck_sink", Ending::MAIN, true, TWO_SECONDS}),
                         [](auto& ending) { return std::string(ending.param.name); });

// Reads the document while three threads log, none of whose calls may take longer than 100 ms.
double secondsToRead(const std::string& document, const char* loggerName) {
  LOGLogger* const logger = LOGManager::getLogger(loggerName);
  std::atomic<Clock::rep> slowest{0};
  const auto log = [&] {
    const auto begin = Clock::now();
    logger->error("meanwhile");
    const Clock::rep time = (Clock::now() - begin).count();
    for (Clock::rep before = slowest; before < time && !slowest.compare_exchange_weak(before, time);) {
    }
    ::usleep(100);
  };
  const auto begin = Clock::now();
  {
    const Meanwhile logging({log, log, log});
    EXPECT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
  }
  const std::chrono::duration<double> took = Clock::now() - begin;
  const std::chrono::duration<double, std::milli> longest = Clock::duration(slowest);
  std::printf("Read again in %.1f s; the slowest log call took %.1f ms.\n", took.count(), longest.count());
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_LT(longest.count(), 100);
#endif
  return took.count();
}

// Everything that a run has to wait for, it waits for while others can log, or not at all.
TEST(Reread, OfADocumentHoldsNoLogCallUp) {
  const Deadline deadline{100};
  const TempDir dir;
  const InternalLog internal;
  ScriptedLogServer server([](const std::string&) { return ScriptedLogServer::HOLD; });
  ASSERT_EQ(0, ::mkfifo(dir.file("pipe").c_str(), 0600));
  VRKConfigurationFactory::getInstance().setBaseDirectory(dir.file("work").c_str());
  const std::string layout = layoutOf(Way::FAST);
  const auto appender = [&](const std::string& kind, const std::string& parameters) {
    return "<appender name='" + kind + "' class='" + kind + "'>" + parameters + layout + "</appender>";
  };
  const std::string document = dir.write(
      "log.xml",
      "<log4j:configuration>" +
          appender("TCPSocketAppender",
                   parameter("RemoteHost", "127.0.0.1") + parameter("Port", std::to_string(server.port()))) +
          appender("SyslogAppender", parameter("Host", "slow.example")) +
          appender("FileAppender", parameter("File", dir.file("pipe"))) +
          appender("RollingFileAppender", parameter("File", dir.file("all.log"))) +
          "<logger name='reread.server'><appender-ref ref='TCPSocketAppender'/></logger>"
          "<logger name='reread.syslog'><appender-ref ref='SyslogAppender'/></logger>"
          "<logger name='reread.pipe'><appender-ref ref='FileAppender'/></logger>"
          "<logger name='reread.fast'><appender-ref ref='RollingFileAppender'/></logger></log4j:configuration>");
  ASSERT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
  LOGLogger* const toServer = LOGManager::getLogger("reread.server");
  for (int n = 1; n <= 1000; ++n) logNumber(toServer, Way::FAST, 0, n);
  LOGManager::getLogger("reread.pipe")->error("nobody reads it");
  ASSERT_TRUE(eventually([&] { return server.held() > 0; }));

  EXPECT_LT(secondsToRead(document, "reread.fast"), 10);
  EXPECT_EQ(0, internal.count("LOGSyslogWriter::init --- Error in converting address."));
  // What the server had not acknowledged is kept for the next appender, in order.
  server.lets = ScriptedLogServer::ALL;
  EXPECT_TRUE(eventually([&] {
    const std::vector<std::string> texts = server.received();
    return std::set<std::string>(texts.begin(), texts.end()).size() == 1000;
  }));
  LOG4VRKConfigurator::shutdown();
}

// The sink hangs for longer than the run waits for queues that it leaves alone.
TEST(Reread, HoldsNoLogCallUpWhileItReplacesAQueueWhoseSinkHangs) {
  const Deadline deadline{100};
  const TempDir dir;
  const std::string document =
      loadDocument(dir, Way::FAST, {{"reread.queue", "async"}, {"reread.file", "file"}}, "FileAppender");
  ASSERT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
  LOGLogger* const queued = LOGManager::getLogger("reread.queue");
  RecordingAppender sink;
  std::atomic<bool> hangs{false};
  sink.onAppend = [&](const std::string&) {
    if (!hangs.exchange(true)) std::this_thread::sleep_for(std::chrono::milliseconds(7500));
  };
  static_cast<LOGAsyncAppender*>(queued->getAppender("async"))->addAppender(&sink);
  for (int n = 0; n < 100; ++n) queued->error("queued");
  ASSERT_TRUE(eventually([&] { return hangs.load(); }));
  const double seconds = secondsToRead(document, "reread.file");
  EXPECT_GT(seconds, 7) << "the queue is delivered first";
  EXPECT_EQ(sink.texts.size(), 100u);
  LOG4VRKConfigurator::shutdown();
  const std::vector<std::string> lines = linesOf(dir.file("all.log"));
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "queued"), 100);
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
