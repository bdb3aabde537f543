// The asynchronous appender under load, reconfiguration and forks.

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr long EACH = 25000;
#else
constexpr long EACH = 250000;
#endif

std::string asyncDocument(const TempDir& dir) {
  return dir.write("log.xml", R"(<log4j:configuration>
    <appender name="file" class="RollingFileAppender">
      <param name="File" value=")" +
                                  dir.file("all.log") + R"("/>
      <param name="MaximumFileSize" value="1000000"/>
      <param name="MaxBackupIndex" value="1000"/>
      <layout class="SimpleLayout"/>
    </appender>
    <appender name="async" class="AsyncAppender"><param name="BufferSize" value="512"/><appender-ref ref="file"/></appender>
    <logger name="load"><level value="INFO"/><appender-ref ref="async"/></logger>
    <logger name="more"><level value="INFO"/><appender-ref ref="async"/></logger>
  </log4j:configuration>)");
}

TEST(Async, EveryEventArrivesOnceAndInOrder) {
  const TempDir dir;
  const std::string document = asyncDocument(dir);
  ASSERT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
  std::atomic<bool> done{false};
  std::thread configuring([&] {
    for (int runs = 0; !done && runs < 20; ++runs) LOG4VRKConfigurator::initialize(document.c_str());
  });
  onThreads(8, [](int t) {
    LOGLogger* const logger = LOGManager::getLogger(t % 2 == 0 ? "load.a" : "more.a");
    for (long n = 1; n <= EACH; ++n) LOG4VRK_INFO(logger, t << " " << n << " end");
  });
  done = true;
  configuring.join();
  LOG4VRKConfigurator::shutdown();
  expectEachOnceInOrder(linesWithBackups(dir.file("all.log")), 8, EACH);
}

// The dispatcher holds events back to write many at once; those who log directly write at once, and behind them.
TEST(Async, SharesAFileWithThoseWhoLogDirectly) {
  const TempDir dir;
  const std::string document = dir.write("log.xml", R"(<log4j:configuration>
    <appender name="file" class="FileAppender">
      <param name="File" value=")" + dir.file("all.log") +
                                                        R"("/><layout class="SimpleLayout"/>
    </appender>
    <appender name="async" class="AsyncAppender"><appender-ref ref="file"/></appender>
    <logger name="queued"><level value="INFO"/><appender-ref ref="async"/></logger>
    <logger name="direct"><level value="INFO"/><appender-ref ref="file"/></logger>
  </log4j:configuration>)");
  ASSERT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
  onThreads(4, [](int t) {
    LOGLogger* const logger = LOGManager::getLogger(t % 2 == 0 ? "queued" : "direct");
    for (long n = 1; n <= EACH / 10; ++n) LOG4VRK_INFO(logger, t << " " << n << " end");
  });
  LOGManager::getLogger("queued")->closeNestedAppenders();  // before the file is closed with the other logger
  LOG4VRKConfigurator::shutdown();
  expectEachOnceInOrder(linesOf(dir.file("all.log")), 4, EACH / 10);
}

// Everything that may meet, in rounds: threads that log, resizing, appenders that come and go, that log themselves and that raise, and
// a close in the middle.
TEST(Async, OutlivesWhateverMeets) {
  const Deadline deadline(110);
  for (int round = 0; round < 200; ++round) {
    Tree tree;
    LOGLogger* const logger = tree.getLogger("a.b");
    LOGLogger* const other = tree.getLogger("a");
    std::atomic<long> delivered{0}, inner{0};
    RecordingAppender sink("sink"), passing("passing"), direct("direct");
    sink.onAppend = [&](const std::string& text) {
      ++delivered;
      if (text.rfind("inner", 0) == 0) return;
      LOG4VRK_INFO(round % 2 == 0 ? logger : other, "inner " << ++inner);
      if (delivered % 17 == 0) throw VRKThrowable("raised", VRK_HERE);
    };
    LOGAsyncAppender async;
    async.setBufferSize(4);
    async.addAppender(&sink);
    logger->addAppender(&async);
    other->addAppender(&direct);
    std::atomic<bool> done{false};
    std::thread changing([&] {
      for (int i = 0; !done; ++i) {
        if (!logger->isAttached(&async)) break;
        async.addAppender(&passing);
        async.removeAppender(&passing);
        try {
          async.setBufferSize(2 + i % 8);
        } catch (const VRKAssertError&) {
          break;  // it has been closed
        }
      }
    });
    std::thread closing([&] {
      while (delivered < 20 && !done) std::this_thread::yield();
      if (round % 4 == 3) async.close();
    });
    onThreads(8, [&](int t) {
      for (int n = 0; n < 8; ++n) LOG4VRK_INFO(t % 2 == 0 ? logger : other, t << " " << n);
    });
    done = true;
    changing.join();
    closing.join();
    async.close();
    if (round % 4 != 3) {
      EXPECT_GE(delivered, 32) << "round " << round;
    }
    logger->removeAppender(&async);
    other->removeAppender(&direct);
  }
}

TEST(Async, AForkedChildLogsForItselfAndTheParentLosesNothing) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizers are not made for forks of several threads; the release build runs this";
#endif
  const TempDir dir;
  ASSERT_EQ(1, LOG4VRKConfigurator::initialize(asyncDocument(dir).c_str()));
  LOGLogger* const logger = LOGManager::getLogger("load");
  std::atomic<bool> done{false};
  std::atomic<long> counts[4] = {};
  std::thread forking([&] {
    for (int child = 0; child < 1000; ++child) {
      const pid_t pid = ::fork();
      if (pid == 0) {
        ::alarm(10);
        LOG4VRK_INFO(logger, 100 + child << " 1 end");
        LOG4VRK_INFO(logger, 100 + child << " 2 end");
        LOG4VRKConfigurator::shutdown();
        ::_exit(0);
      }
      ASSERT_EQ(0, statusOf(pid)) << "child " << child;
    }
    done = true;
  });
  onThreads(4, [&](int t) {
    while (!done && counts[t] < 5000) LOG4VRK_INFO(logger, t << " " << ++counts[t] << " end");
  });
  forking.join();
  LOG4VRKConfigurator::shutdown();
  std::map<int, long> last;
  ASSERT_NO_FATAL_FAILURE(lastNumbers(linesWithBackups(dir.file("all.log")), last));
  for (int t = 0; t < 4; ++t) EXPECT_EQ(counts[t], last[t]);
  for (int child = 0; child < 1000; ++child) EXPECT_EQ(2, last[100 + child]) << "child " << child;
}

}  // namespace
