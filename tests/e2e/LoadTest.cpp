// Loggers under load: while a document is read again, through a queue and beside it, and in forked children.

#include "tests/support/Load.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr long EACH = 25000;
#else
constexpr long EACH = 250000;
#endif

// While threads log, their loggers are configured anew, and get other levels and appenders.
void loseAndRepeatNothing(Way way, const References& references, const char* other, long each, long fileSize,
                          int configurations) {
  const TempDir dir;
  const std::string document = loadDocument(dir, way, references, "RollingFileAppender", fileSize);
  ASSERT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
  std::atomic<bool> done{false};
  std::thread logging([&] {
    onThreads(8, [&](int t) { logNumbers(t % 2 == 0 ? "load.inner.most" : other, way, t, each); });
    done = true;
  });
  LOGLogger* const logger = LOGManager::getLogger("load");
  LOGLogger* const inner = LOGManager::getLogger("load.inner");
  LOGLevel* const levels[] = {LOGLevel::DEBUG_OBJ, LOGLevel::ERROR_OBJ, LOGLevel::WARN_OBJ, LOGLevel::ALL_OBJ};
  struct : LOGAppenderSkeleton {
    void append(LOGLoggingEvent*) override {}
  } passing;
  passing.setName("passing");
  for (int run = 0; run < configurations || !done; ++run) {
    logger->addAppender(&passing);
    logger->setLevel(levels[run % 4]);
    inner->setLevel(run % 3 == 0 ? nullptr : levels[run % 4]);
    logger->removeAppender(&passing);
    if (run < configurations) {
      EXPECT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
    }
  }
  logging.join();
  LOG4VRKConfigurator::shutdown();
  expectEachOnceInOrder(linesWithBackups(dir.file("all.log")), 8, each);
  EXPECT_EQ(nullptr, logger->getAppender("passing"));
}

using Reconfiguration = BothWays;
LOG4VRK_ON_BOTH_WAYS(Reconfiguration);

TEST_P(Reconfiguration, LosesAndRepeatsNothing) {
  loseAndRepeatNothing(GetParam(), {{"load", "file"}}, "load", 10000, 50000, 50);
}
TEST_P(Reconfiguration, LosesAndRepeatsNothingThroughAQueue) {
  loseAndRepeatNothing(GetParam(), {{"direct", "file"}, {"load", "async"}}, "direct.a", EACH / 2, 1000000, 20);
}

struct Queues : BothWays {};
LOG4VRK_ON_BOTH_WAYS(Queues);

// The dispatcher holds events back to write many at once; those who log directly write at once, and behind them. The
// queue changes its size meanwhile, and some events are more than a text.
TEST_P(Queues, ShareAFileWithThoseWhoLogDirectly) {
  const TempDir dir;
  ASSERT_EQ(1, LOG4VRKConfigurator::initialize(
                   loadDocument(dir, GetParam(), {{"direct", "file"}, {"queued", "async"}}, "FileAppender").c_str()));
  auto& queue = dynamic_cast<LOGAsyncAppender&>(*LOGManager::getLogger("queued")->getAppender("async"));
  {
    int size = 0;
    const Meanwhile resizing({[&] { queue.setBufferSize(20 + ++size % 500); }});
    onThreads(4, [](int t) {
      LOGLogger* const logger = LOGManager::getLogger(t % 2 == 0 ? "queued" : "direct");
      for (long n = 1; n <= EACH / 10; ++n) logNumber(logger, n % 3 == 0 ? Way::ORDINARY : GetParam(), t, n);
    });
  }
  LOG4VRKConfigurator::shutdown();
  expectEachOnceInOrder(linesOf(dir.file("all.log")), 4, EACH / 10);
}

// Everything that may meet, in rounds: threads that log, resizing, appenders that come and go, that log themselves and
// that raise, and a close in the middle.
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
    {
      int size = 0;
      const Meanwhile changing({[&] {
        async.addAppender(&passing);
        async.removeAppender(&passing);
        try {
          async.setBufferSize(2 + ++size % 8);
        } catch (const VRKAssertError&) {
          std::this_thread::yield();  // it has been closed
        }
      }});
      onThreads(9, [&](int t) {
        for (int n = 0; t < 8 && n < 8; ++n) LOG4VRK_INFO(t % 2 == 0 ? logger : other, t << " " << n);
        while (t == 8 && delivered < 20) std::this_thread::yield();
        if (t == 8 && round % 4 == 3) async.close();
      });
    }
    async.close();
    if (round % 4 != 3) {
      EXPECT_GE(delivered, 32) << "round " << round;
    }
    logger->removeAppender(&async);
    other->removeAppender(&direct);
  }
}

TEST_P(Queues, AForkedChildLogsForItselfAndTheParentLosesNothing) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizers are not made for forks of several threads; the release build runs this";
#endif
  forkWhileThreadsLog(GetParam(), 500);
}

}  // namespace
