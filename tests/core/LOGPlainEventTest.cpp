// Events whose message is a text and nothing else. They go to an appender of the library's own classes without the
// logger's lock.

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

struct PlainEvent : testing::Test {
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
TEST_F(PlainEvent, AnAppenderMayBeDeletedAsSoonAsItIsRemoved) {
  tree.getRootLogger()->addAppender(steady.get());
  auto logging = std::make_unique<Meanwhile>(std::vector{log, log, log});
  for (int i = 0; i < 400; ++i) {
    const std::unique_ptr<LOGFileAppender> file = newFile("passing");
    RecordingAppender recording("passing");
    LOGAsyncAppender queue;
    queue.setName("queue");
    queue.addAppender(file.get());
    queue.activateOptions();
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

TEST_F(PlainEvent, AnAppenderMayBeRemovedByWhatItWritesWhileOthersWaitForIt) {
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

TEST_F(PlainEvent, ReadsLikeAnyOtherInEveryProcessAndThread) {
  layout.setConversionPattern("%% %d{%Q %Y}{UTC} [%6t] %-5p %c{1} %x%m%n");
  logger->addAppender(steady.get());
  const auto logAndRead = [this] {
    HookMessage object("text");
    for (int i = 0; i < 2; ++i) {  // the second time in the same second as the first, most often
      LOG4VRK_WARN(logger, "text");
      logger->warn("text");
      logger->warn(&object);
    }
    const std::string thread = std::to_string(VRKThread::currentThreadId());
    const std::string padding(thread.size() < 6 ? 6 - thread.size() : 0, ' ');
    const std::string year = std::to_string(1970 + static_cast<long>(std::time(nullptr)) / 31556952);
    const Texts lines = linesOf(dir.file("steady"));
    ASSERT_GE(lines.size(), 6u);
    const std::string expected = "% " + year + " [" + padding + thread + "] WARN  b text";
    for (auto line = lines.end() - 6; line != lines.end(); ++line) {
      EXPECT_EQ(line->substr(0, 2) + line->substr(6), expected);
    }
  };
  logAndRead();
  std::thread(logAndRead).join();
  EXPECT_EQ(statusInChild(logAndRead), 0);
  logAndRead();
}
