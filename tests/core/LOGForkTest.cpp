// Forking while other threads are inside the library.

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "log4vrk/appenders/LOGFileAppender.h"
#include "log4vrk/config/LOG4VRKConfigurator.h"
#include "log4vrk/core/LOGManager.h"
#include "log4vrk/core/LOGMessage.h"
#include "log4vrk/layouts/LOGDefaultRenderer.h"
#include "log4vrk/layouts/LOGLayout.h"
#include "log4vrk/layouts/LOGRendererMap.h"
#include "log4vrk/platform/VRKConfigurationFactory.h"
#include "tests/support/Doubles.h"
#include "tests/support/InternalLog.h"
#include "tests/support/Logs.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace {

using vrktest::HookMessage;
using vrktest::RecordingAppender;
using vrktest::Tree;

constexpr unsigned CHILDS_SECONDS = 20;

/// Threads that do the same again and again until the scope ends.
class Busy {
 public:
  explicit Busy(std::vector<std::function<void()>> bodies) : m_started(bodies.size()) {
    for (auto& body : bodies) {
      m_threads.emplace_back([this, body] {
        body();
        --m_started;
        while (!m_done) body();
      });
    }
    while (m_started > 0) std::this_thread::yield();
  }
  ~Busy() {
    m_done = true;
    for (std::thread& thread : m_threads) thread.join();
  }

 private:
  std::atomic<std::size_t> m_started;
  std::atomic<bool> m_done{false};
  std::vector<std::thread> m_threads;
};

}  // namespace

// Each line is "<writer> <number> end", and no writer's number is missing, torn or there twice.
TEST(Fork, ChildrenLogWhileTheParentGoesOnWithoutLoss) {
  constexpr int FORKS = 200;
  const vrktest::Deadline deadline(110);
  const vrktest::TempDir dir;
  std::map<int, long> written;
  {
    LOGLayout layout;
    LOGFileAppender file(&layout, dir.file("all.log").c_str());
    RecordingAppender passing("passing");
    Tree tree;
    LOGLogger* const shared = tree.getLogger("shared");
    tree.getRootLogger()->addAppender(&file);
    long counts[4] = {0, 0, 0, 0};
    const auto write = [&](LOGLogger* logger, int writer) {
      LOG4VRK_INFO(logger, writer << " " << ++counts[writer] << " end");
    };
    {
      const Busy busy({[&] { write(shared, 0); },
                       [&] {
                         HookMessage outer(I18NString("1 ") + ++counts[1] + " end", [&] { write(shared, 1); });
                         shared->info(&outer);
                       },
                       [&] { write(tree.getLogger(I18NString("new.") + counts[2] % 1000 + ".logger"), 2); },
                       [&] {
                         shared->addAppender(&passing);
                         write(shared, 3);
                         shared->removeAppender(&passing);
                       }});
      for (int fork = 1; fork <= FORKS; ++fork) {
        const int status = vrktest::statusInChild(
            [&] {
              LOG4VRK_INFO(shared, 100 + fork << " 1 end");
              LOG4VRK_INFO(tree.getLogger(I18NString("child.") + fork), 100 + fork << " 2 end");
              RecordingAppender own("own");
              shared->addAppender(&own);
              LOG4VRK_INFO(tree.getLogger("shared.below"), 100 + fork << " 3 end");
              EXPECT_EQ(own.texts.size(), 1u);
              shared->removeAppender(&own);
              tree.getRootLogger()->closeNestedAppenders();
            },
            CHILDS_SECONDS);
        ASSERT_EQ(status, 0) << "fork " << fork;
        written[100 + fork] = 3;
      }
    }
    for (int writer = 0; writer < 4; ++writer) written[writer] = counts[writer];
  }
  std::map<int, long> last;
  for (const std::string& line : vrktest::linesOf(dir.file("all.log"))) {
    std::istringstream fields(line);
    int writer = -1;
    long number = -1;
    std::string end;
    fields >> writer >> number >> end;
    ASSERT_TRUE(end == "end" && number == ++last[writer]) << line;
  }
  EXPECT_EQ(last, written);
}

// What any thread may be doing outside of a log call.
TEST(Fork, ChildrenFindNoLockHeld) {
  const vrktest::Deadline deadline(110);
  LOGDefaultRenderer renderer;
  Tree tree;
  std::atomic<int> next{0};
  const struct {
    const char* what;
    std::function<void()> body;
  } CASES[] = {
      {"internal log", [] { LOGLogLog::debug("line"); }},
      {"loggers", [&] { LOGManager::getLogger(I18NString("a.") + next++ % 1000)->setLevel(LOGLevel::INFO_OBJ); }},
      {"named levels", [] { LOGLevel(1, "NAMED", 1); }},
      {"resolved paths", [] { VRKConfigurationFactory::getInstance().resolvePath("a.log"); }},
      {"renderers", [&] { tree.setRenderer("Rendered", &renderer); }},
      {"rendering",
       [] {
         LOGObject o("text");
         o.instance("Rendered");
         std::unique_ptr<I18NString>(LOGRendererMap::findAndRender(&o));
       }},
  };
  for (const auto& c : CASES) {
    const Busy busy({c.body, c.body});
    for (int fork = 0; fork < 100; ++fork) {
      const int status = vrktest::statusInChild(c.body, 5);
      EXPECT_EQ(status, 0) << c.what;
      if (status != 0) break;
    }
  }
}

TEST(Fork, FromInsideALogCallTheChildGoesOnLikeItsParent) {
  const vrktest::Deadline deadline(110);
  pid_t child = -1;
  RecordingAppender forking, other;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  LOGLogger* const busyLogger = tree.getLogger("b");
  logger->addAppender(&forking);
  busyLogger->addAppender(&other);
  forking.onAppend = [&](const std::string& text) {
    if (text == "outer") {
      child = ::fork();
      logger->info("inner");
    }
  };
  const Busy busy({[&] { tree.getLogger("a.b.c"); }, [] { LOGLogLog::debug("line"); }});
  for (int fork = 0; fork < 50; ++fork) {
    forking.texts.clear();
    logger->info("outer");
    if (child == 0) {
      ::alarm(CHILDS_SECONDS);
      logger->info("after");
      ::_exit(forking.texts == vrktest::Texts{"outer", "inner", "after"} ? 0 : 1);
    }
    ASSERT_EQ(vrktest::statusOf(child), 0);
    ASSERT_EQ(forking.texts, (vrktest::Texts{"outer", "inner"}));
  }
}

// In a child of the parent's that had been about to deliver what it had put off.
TEST(Fork, TheChildsNewThreadsStartAfresh) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "the sanitizer has no threads after a fork of several";
#endif
  const vrktest::Deadline deadline(110);
  RecordingAppender appender;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  logger->addAppender(&appender);
  appender.onAppend = [&](const std::string& text) {
    if (text == "outer") logger->info("inner 1"), logger->info("inner 2");
  };
  const Busy busy({[&] { logger->info("outer"); }, [&] { logger->info("outer"); }});
  for (int fork = 0; fork < 50; ++fork) {
    ASSERT_EQ(vrktest::statusInChild([&] {
                std::atomic<int> finished{0};
                std::vector<std::thread> threads;
                for (int t = 1; t <= 3; ++t) {
                  appender.texts.clear();
                  threads.emplace_back([&] {
                    logger->info("outer");
                    ++finished;
                    vrktest::eventually([&] { return finished > 3; });
                  });
                  EXPECT_TRUE(vrktest::eventually([&] { return finished == t; }));
                  EXPECT_EQ(appender.texts, (vrktest::Texts{"outer", "inner 1", "inner 2"}));
                }
                ++finished;
                for (std::thread& thread : threads) thread.join();
              }),
              0)
        << "fork " << fork;
  }
}

// As an appender does that starts a program for each event, while the configuration is read anew.
TEST(Fork, FromInsideALogCallDoesNotWaitForAConfigurationThatWaitsForIt) {
  EXPECT_EQ(
      vrktest::statusInChild(
          [] {
            const vrktest::TempDir dir;
            const std::string document = dir.write(
                "log.xml",
                "<log4j:configuration><logger name='forking'><level value='INFO'/></logger></log4j:configuration>");
            LOGLogger* const logger = LOGManager::getLogger("forking");
            int forks = 0;
            std::vector<RecordingAppender> forking(20);  // each run closes and removes the one that it finds
            const Busy busy({[&] { EXPECT_EQ(LOG4VRKConfigurator::initialize(document.c_str()), 1); }});
            for (RecordingAppender& each : forking) {
              each.onAppend = [&](const std::string&) { forks += vrktest::statusInChild([] {}) == 0; };
              logger->addAppender(&each);
              logger->info("event");
            }
            EXPECT_GT(forks, 0);
          },
          40),
      0);
}
