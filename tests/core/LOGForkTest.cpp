// Forking while other threads are inside the library.

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

/// A logger whose appender logs twice for each "outer".
struct Fork : TreeTest {
  Fork() {
    root.onAppend = [&](const std::string& text) {
      if (text != "outer") return;
      if (onOuter) onOuter();
      for (const char* inner : {"inner 1", "inner 2"}) logger->info(inner);
    };
  }

  void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's allocator may be left locked in a forked child; the release build runs this";
#endif
  }

  const Texts ALL{"outer", "inner 1", "inner 2"};
  std::function<void()> onOuter;
};

}  // namespace

// Each line is "<writer> <number> end", and no writer's number is missing, torn or there twice.
TEST_F(Fork, ChildrenLogWhileTheParentGoesOnWithoutLoss) {
  const TempDir dir;
  LOGLayout layout;
  LOGFileAppender file(&layout, dir.file("all.log").c_str());
  RecordingAppender passing("passing");
  tree.getRootLogger()->removeAppender(&root);
  tree.getRootLogger()->addAppender(&file);
  std::map<int, long> written;
  long* const counts[] = {&written[0], &written[1], &written[2], &written[3]};
  const auto write = [&](LOGLogger* to, int writer) { LOG4VRK_INFO(to, writer << " " << ++*counts[writer] << " end"); };
  {
    const Meanwhile busy({[&] { write(logger, 0); },
                          [&] {
                            HookMessage outer(I18NString("1 ") + ++*counts[1] + " end", [&] { write(logger, 1); });
                            logger->info(&outer);
                          },
                          [&] { write(tree.getLogger(I18NString("new.") + *counts[2] % 1000 + ".logger"), 2); },
                          [&] {
                            logger->addAppender(&passing);
                            write(logger, 3);
                            logger->removeAppender(&passing);
                          }});
    for (int child = 101; child <= 300; ++child) {
      const auto logToo = [&] {
        RecordingAppender own("own");
        logger->addAppender(&own);
        LOG4VRK_INFO(logger, child << " 1 end");
        LOG4VRK_INFO(tree.getLogger(I18NString("a.b.child.") + child), child << " 2 end");
        EXPECT_EQ(own.texts.size(), 2u);
        tree.getRootLogger()->closeNestedAppenders();
      };
      ASSERT_EQ(statusInChild(logToo, 20), 0) << "child " << child;
      written[child] = 2;
    }
  }
  tree.getRootLogger()->removeAppender(&file);
  std::map<int, long> last;
  ASSERT_NO_FATAL_FAILURE(lastNumbers(linesOf(dir.file("all.log")), last));
  EXPECT_EQ(last, written);
}

// What any thread may be doing outside of a log call.
TEST_F(Fork, ChildrenFindNoLockHeld) {
  LOGDefaultRenderer renderer;
  std::atomic<int> next{0};
  const std::pair<const char*, std::function<void()>> CASES[] = {
      {"internal log", [] { LOGLogLog::debug("line"); }},
      {"loggers", [&] { LOGManager::getLogger(I18NString("a.") + next++ % 1000)->setLevel(LOGLevel::INFO_OBJ); }},
      {"named levels", [] { LOGLevel(1, "NAMED", 1); }},
      {"paths", [] { VRKConfigurationFactory::getInstance().resolvePath("a.log"); }},
      {"renderers", [&] { tree.setRenderer("Rendered", &renderer); }},
      {"rendering", [] {
         LOGObject object("text");
         object.instance("Rendered");
         delete LOGRendererMap::findAndRender(&object);
       }}};
  for (const auto& [what, body] : CASES) {
    const Meanwhile busy({body, body});
    int status = 0;
    for (int fork = 0; fork < 100 && status == 0; ++fork) status = statusInChild(body, 5);
    EXPECT_EQ(status, 0) << what;
  }
}

TEST_F(Fork, FromInsideALogCallTheChildGoesOnLikeItsParent) {
  pid_t child = -1;
  onOuter = [&] {
    child = ::fork();
    if (child == 0) ::alarm(20);
  };
  const Meanwhile busy({[&] { tree.getLogger("a.b.c.d"); }, [] { LOGLogLog::debug("line"); }});
  for (int fork = 0; fork < 50; ++fork) {
    root.texts.clear();
    logger->info("outer");
    if (child == 0) ::_exit(root.texts == ALL ? 0 : 1);
    ASSERT_EQ(statusOf(child), 0);
    ASSERT_EQ(root.texts, ALL);
  }
}

// A thread of the parent's may have been about to deliver what it had put off.
TEST_F(Fork, TheChildsNewThreadsStartAfresh) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "the sanitizer has no new threads after a fork of several";
#endif
  const Meanwhile busy({[&] { logger->info("outer"); }, [&] { logger->info("outer"); }});
  const auto startThreads = [&] {
    std::list<Meanwhile> threads;  // of which each logs once and stays until the end
    for (int t = 0; t < 3; ++t) {
      root.texts.clear();
      const auto logOnce = [&, logged = false]() mutable {
        std::exchange(logged, true) ? std::this_thread::yield() : logger->info("outer");
      };
      threads.emplace_back(std::vector<std::function<void()>>{logOnce});
      EXPECT_EQ(root.texts, ALL);
    }
  };
  for (int fork = 0; fork < 50; ++fork) ASSERT_EQ(statusInChild(startThreads), 0) << "fork " << fork;
}

// As an appender does that starts a program for each event, while the configuration is read anew.
TEST_F(Fork, FromInsideALogCallDoesNotWaitForAConfigurationThatWaitsForIt) {
  const auto forkWhileConfiguring = [] {
    const TempDir dir;
    const std::string document =
        dir.write("log.xml", "<log4j:configuration><logger name='forking'/></log4j:configuration>");
    LOGLogger* const forking = LOGManager::getLogger("forking");
    int forks = 0;
    std::list<RecordingAppender> appenders;  // each run closes and removes the one that it finds
    const Meanwhile busy({[&] { EXPECT_EQ(LOG4VRKConfigurator::initialize(document.c_str()), 1); }});
    while (forks < 10) {
      RecordingAppender& next = appenders.emplace_back();
      next.onAppend = [&](const std::string&) { forks += statusInChild([] {}) == 0; };
      forking->addAppender(&next);
      forking->info("event");
    }
  };
  EXPECT_EQ(statusInChild(forkWhileConfiguring, 40), 0);
}

// The fork gives up waiting for them. Their locks are held for ever, by threads that the child does not have.
TEST_F(Fork, TheChildTakesOverTheLocksOfThreadsThatAreStuckInAnAppender) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "the sanitizer has no new threads after a fork of several";
#endif
  const TempDir dir;
  const std::string document = dir.write("log.xml", R"(<log4j:configuration>
      <logger name='stuck.call'/><logger name='stuck.queue'/><root/></log4j:configuration>)");
  std::atomic<bool> goOn{false};
  std::atomic<int> stuck{0};
  RecordingAppender sink("sink"), direct("direct");
  for (RecordingAppender* each : {&sink, &direct}) {
    each->onAppend = [&](const std::string&) {
      ++stuck;
      eventually([&] { return goOn.load(); }, 60);
    };
  }
  LOGAsyncAppender queue;
  queue.addAppender(&sink);
  LOGLogger* const queued = LOGManager::getLogger("stuck.queue");
  LOGLogger* const called = LOGManager::getLogger("stuck.call");
  queued->addAppender(&queue);
  called->addAppender(&direct);
  queued->info("parent");
  std::thread calling([&] { called->info("parent"); });
  EXPECT_TRUE(eventually([&] { return stuck == 2; }));
  const auto useEverything = [&] {
    goOn = true;
    onThreads(2, [&](int) {
      called->info("child");
      queued->info("child");
    });
    queue.close();
    EXPECT_EQ(sink.texts, Texts({"parent", "child", "child"}));
    EXPECT_EQ(direct.texts, Texts({"parent", "child", "child"}));
    EXPECT_EQ(LOG4VRKConfigurator::initialize(document.c_str()), 1);
    EXPECT_EQ(direct.closings, 1);
    LOG4VRKConfigurator::shutdown();
    std::exit(HasFailure() ? 1 : 0);
  };
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(statusInChild(useEverything), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
  goOn = true;
  calling.join();
  queue.close();
  for (LOGLogger* each : {queued, called}) each->removeAllAppenders();
}
