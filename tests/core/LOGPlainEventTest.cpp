// Events whose message is a text and nothing else: they go to an appender of the library's own without the logger's lock.

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

class PlainEvent : public testing::Test {
 protected:
  std::unique_ptr<LOGFileAppender> newFile(const std::string& name) {
    auto made = std::make_unique<LOGFileAppender>(&layout, dir.file(name).c_str());
    made->setName(name.c_str());
    return made;
  }
  std::unique_ptr<Meanwhile> logMeanwhile() {
    return std::make_unique<Meanwhile>(std::vector<std::function<void()>>(3, [this] {
      logger->info("event");
      ++sent;
    }));
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
};

}  // namespace

TEST_F(PlainEvent, AnAppenderMayBeDeletedAsSoonAsItIsRemoved) {
  tree.getRootLogger()->addAppender(steady.get());
  std::unique_ptr<Meanwhile> logging = logMeanwhile();
  for (int i = 0; i < 300; ++i) {
    const std::unique_ptr<LOGFileAppender> file = newFile("passing");
    LOGAsyncAppender queue;
    queue.addAppender(file.get());
    queue.activateOptions();
    LOGAppenderSkeleton* const passing = i % 3 == 0 ? static_cast<LOGAppenderSkeleton*>(&queue) : file.get();
    LOGLogger* const where =
        i % 2 == 0 ? logger : tree.getRootLogger();  // where it is the only one, and where it is not
    where->addAppender(passing);
    waitForEvents();
    where->removeAppender(passing);
  }
  logging.reset();
  EXPECT_EQ(linesOf(dir.file("steady")).size(), sent);
  tree.getRootLogger()->removeAppender(steady.get());
}

TEST_F(PlainEvent, AnAppenderMayBeRemovedByWhatItWritesWhileOthersWaitForIt) {
  std::unique_ptr<Meanwhile> logging = logMeanwhile();
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
  const auto logBoth = [this](const char* process) {
    const std::string thread = std::to_string(VRKThread::currentThreadId());
    for (const bool plain : {true, false}) {
      LOG4VRK_WARN(logger, process << ' ' << thread);  // the second one in the same second as the first, most often
      HookMessage object((std::string(process) + ' ' + thread).c_str(), [] {});
      plain ? logger->error((std::string(process) + ' ' + thread).c_str()) : logger->error(&object);
    }
  };
  logBoth("parent");
  std::thread(logBoth, "thread").join();
  EXPECT_EQ(0, statusInChild([&] { logBoth("child"); }));
  logBoth("parent");
  const std::vector<std::string> lines = linesOf(dir.file("steady"));
  ASSERT_EQ(16u, lines.size());
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string thread = lines[i].substr(lines[i].rfind(' ') + 1);
    const std::string padded = std::string(thread.size() < 6 ? 6 - thread.size() : 0, ' ') + thread;
    const std::string expected = "[" + padded + "] " + (i % 2 == 0 ? "WARN " : "ERROR") + " b ";
    EXPECT_EQ(expected, lines[i].substr(11, expected.size())) << lines[i];
    const long now = static_cast<long>(std::time(nullptr));
    EXPECT_EQ(std::to_string(1970 + now / 31556952), lines[i].substr(6, 4)) << lines[i];
  }
}
