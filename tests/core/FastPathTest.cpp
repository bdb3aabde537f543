// Events whose message is a text and nothing else. They go to an appender of the library's own classes without the
// logger's lock.

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

struct Delivery : testing::Test {
  std::unique_ptr<LOGFileAppender> newFile(const std::string& name) {
    auto made = std::make_unique<LOGFileAppender>(&layout, dir.file(name).c_str());
    made->setName(name.c_str());
    return made;
  }
  void waitForEvents() {
    const std::size_t before = sent;
    eventually([&] { return sent > before + 3; });
  }

  const Deadline deadline{60};
  const TempDir dir;
  LOGPatternLayout layout{"%m%n"};
  std::unique_ptr<LOGFileAppender> steady = newFile("steady");
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a.b");
  std::atomic<std::size_t> sent{0};
  const std::function<void()> log = [this] {
    logger->info("event");
    ++sent;
  };
};

}  // namespace

// Also one of the program's own, for which events take the longer way.
TEST_F(Delivery, AnAppenderMayBeDeletedAsSoonAsItIsRemoved) {
  tree.getRootLogger()->addAppender(steady.get());
  auto logging = std::make_unique<Meanwhile>(std::vector{log, log, log});
  for (int i = 0; i < 400; ++i) {
    const std::unique_ptr<LOGFileAppender> file = newFile("passing");
    RecordingAppender recording("passing");
    LOGAsyncAppender queue;
    queue.setName("queue");
    queue.addAppender(file.get());
    LOGAppenderSkeleton* const KINDS[] = {file.get(), &queue, &recording};
    LOGAppenderSkeleton* const passing = KINDS[i % 3];
    // Where it is the only one, and where it is not.
    LOGLogger* const where = i % 2 == 0 ? logger : tree.getRootLogger();
    where->addAppender(passing);
    waitForEvents();
    i % 5 == 0 ? where->removeAppender(passing->getName()) : where->removeAppender(passing);
  }
  logging.reset();
  EXPECT_EQ(linesOf(dir.file("steady")).size(), sent);
  tree.getRootLogger()->removeAppender(steady.get());
}

TEST_F(Delivery, AnAppenderMayBeRemovedByWhatItWritesWhileOthersWaitForIt) {
  const Meanwhile logging({log, log, log});
  for (int i = 0; i < 100; ++i) {
    const std::unique_ptr<LOGFileAppender> passing = newFile("passing");
    logger->addAppender(passing.get());
    waitForEvents();
    HookMessage removing("", [&] { logger->removeAppender(passing.get()); });
    logger->info(&removing);
    EXPECT_FALSE(logger->isAttached(passing.get()));
  }
}

TEST_F(Delivery, ThreadsThatShareABufferLoseTearAndMixNothing) {
  LOGFileAppender buffered(&layout, dir.file("buffered").c_str(), 0, 1, 1000);
  logger->addAppender(&buffered);
  onThreads(4, [&](int t) {
    for (long n = 1; n <= 10000; ++n) logNumber(logger, Way::FAST, t, n);
  });
  logger->removeAppender(&buffered);
  buffered.close();
  expectEachOnceInOrder(linesOf(dir.file("buffered")), 4, 10000);
}

// The dispatcher must not wait for log calls that wait for the dispatcher.
TEST_F(Delivery, AnAppenderBehindAQueueMayRemoveThatQueue) {
  for (int round = 0; round < 20; ++round) {
    LOGAsyncAppender queue;
    RecordingAppender sink("sink");
    queue.setBufferSize(2);
    queue.addAppender(&sink);
    logger->addAppender(&queue);
    sink.onAppend = [&](const std::string&) {
      if (sink.texts.size() == 5) logger->removeAppender(&queue);
    };
    onThreads(4, [&](int) {
      for (int i = 0; i < 20; ++i) logger->info("event");
    });
    EXPECT_FALSE(logger->isAttached(&queue));
    logger->removeAppender(&queue);
    queue.close();
    EXPECT_GE(sink.texts.size(), 5u);
  }
}
