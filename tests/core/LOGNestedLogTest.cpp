// Log calls that application code makes while the library calls it.

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "log4vrk/appenders/LOGFilter.h"
#include "log4vrk/config/LOG4VRKConfigurator.h"
#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/core/LOGManager.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "tests/support/Doubles.h"
#include "tests/support/InternalLog.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace {

using vrktest::HookFactory;
using vrktest::HookListener;
using vrktest::HookMessage;
using vrktest::RecordingAppender;
using vrktest::Texts;
using vrktest::Tree;

class HookFilter : public LOGFilter {
 public:
  explicit HookFilter(std::function<void()> hook) : m_hook(std::move(hook)) {}
  int decide(LOGLoggingEvent*) override {
    m_hook();
    return m_NEUTRAL;
  }

 private:
  std::function<void()> m_hook;
};

/// A tree with one appender at the root, and a second one below at the logger "a".
struct NestedLog : testing::Test {
  NestedLog() {
    tree.getRootLogger()->addAppender(&root);
    tree.getLogger("a")->addAppender(&child);
  }

  const vrktest::Deadline deadline{60};
  RecordingAppender root{"root"}, child{"child"};
  Tree tree;
};

}  // namespace

TEST_F(NestedLog, IsDeliveredOnceTheOuterCallIsOverWhereverItCameFrom) {
  const auto once = [](std::function<void()> hook) {
    return [hook, armed = true]() mutable {
      if (std::exchange(armed, false)) hook();
    };
  };
  LOGLogger* const a = tree.getLogger("a");
  for (LOGLogger* target : {a, tree.getLogger("a.b"), tree.getLogger("z"), tree.getRootLogger()}) {
    const auto inner = once([&] {
      target->info("inner 1");
      target->info("inner 2");
    });
    const struct {
      const char* place;
      std::function<void()> outer;
      bool logsItself;
    } CASES[] = {
        {"toString",
         [&] {
           HookMessage message("outer", inner);
           a->info(&message);
         },
         true},
        {"append",
         [&] {
           child.onAppend = std::bind(std::function<void()>(inner));
           a->info("outer");
         },
         true},
        {"activateOptions",
         [&] {
           child.onActivate = inner;
           a->info("outer");
         },
         true},
        {"filter",
         [&] {
           HookFilter filter(inner);
           child.addFilter(&filter);
           a->info("outer");
           child.clearFilters();
         },
         true},
        {"factory",
         [&] {
           HookFactory factory([f = std::function<void()>(inner)](const I18NString& name) {
             f();
             return new LOGLogger(name);
           });
           tree.getLogger(I18NString("new.") + target->getName(), &factory);
         },
         false},
        {"close",
         [&] {
           RecordingAppender closing;
           closing.onClose = inner;
           LOGLogger* const x = tree.getLogger("x");
           x->addAppender(&closing);
           x->closeNestedAppenders();
           x->removeAppender(&closing);
         },
         false},
    };
    for (const auto& c : CASES) {
      root.texts.clear();
      c.outer();
      child.onAppend = nullptr;
      child.onActivate = nullptr;
      EXPECT_EQ(root.texts, c.logsItself ? (Texts{"outer", "inner 1", "inner 2"}) : (Texts{"inner 1", "inner 2"}))
          << c.place << " to " << target->getName().toUtf8();
    }
  }
  HookListener listener([&](LOGLogger* logger, LOGAppenderSkeleton*) { logger->info("from the listener"); });
  tree.addHierarchyEventListener(&listener);
  RecordingAppender added("added");
  tree.getLogger("a.b")->addAppender(&added);
  tree.getLogger("a.b")->removeAppender(&added);
  EXPECT_EQ(added.texts, (Texts{"from the listener"}));
}

TEST_F(NestedLog, KeepsTheOrderAtEveryDepthAndOutlivesAnAppenderThatRaises) {
  LOGLogger* const a = tree.getLogger("a");
  child.onAppend = [&](const std::string& text) {
    if (text.size() < 3) {
      a->info(I18NString(std::string_view(text + "1")));
      a->info(I18NString(std::string_view(text + "2")));
    }
    if (text == "x1") throw std::runtime_error("after it has logged");
  };
  a->info("x");
  EXPECT_EQ(child.texts, (Texts{"x", "x1", "x2", "x11", "x12", "x21", "x22"}));
  EXPECT_EQ(root.texts, (Texts{"x", "x2", "x11", "x12", "x21", "x22"}));
}

// Two appenders that log into each other's logger, each with its own thread: the locks would be taken in both orders.
TEST_F(NestedLog, BothWaysBetweenTwoThreadsNeitherHangsNorLoses) {
  constexpr int EVENTS = 2000;
  RecordingAppender left, right;
  Tree pair;
  LOGLogger* const toLeft = pair.getLogger("left");
  LOGLogger* const toRight = pair.getLogger("left.right");
  toLeft->addAppender(&left);
  toRight->addAppender(&right);
  toRight->setAdditivity(0);
  toLeft->setAdditivity(0);
  left.onAppend = [&](const std::string& text) {
    if (text[0] == 'L') toRight->info(I18NString(std::string_view("from " + text)));
  };
  right.onAppend = [&](const std::string& text) {
    if (text[0] == 'R') toLeft->info(I18NString(std::string_view("from " + text)));
  };
  const auto run = [&](LOGLogger* logger, const char* name) {
    for (int i = 0; i < EVENTS; ++i) logger->info(I18NString(name) + i);
  };
  std::thread one(run, toLeft, "L"), two(run, toRight, "R");
  one.join();
  two.join();
  const auto expectAllInOrder = [](const Texts& texts, const std::string& own, const std::string& other) {
    int ownNext = 0, otherNext = 0;
    for (const std::string& text : texts) {
      ASSERT_TRUE(text == own + std::to_string(ownNext) || text == other + std::to_string(otherNext)) << text;
      ++(text[0] == own[0] ? ownNext : otherNext);
    }
    EXPECT_TRUE(ownNext == EVENTS && otherNext == EVENTS);
  };
  expectAllInOrder(left.texts, "L", "from R");
  expectAllInOrder(right.texts, "R", "from L");
}

TEST_F(NestedLog, WithoutEndIsStoppedWithOneLine) {
  LOGLogger* const a = tree.getLogger("a");
  child.onAppend = [&](const std::string&) { a->info("again"); };
  for (const std::size_t expected : {1001u, 2002u}) {
    const InternalLog log;
    a->info("first");
    EXPECT_EQ(child.texts.size(), expected);
    EXPECT_EQ(log.lines(), (Texts{"log4vrk:ERROR Too many log calls from inside a log call, dropping events."}));
  }
}

// Putting an event off takes a second copy of its message.
TEST_F(NestedLog, AnEventThatCannotBePutOffIsReported) {
  class CopiedOnce : public LOGObject {
   public:
    explicit CopiedOnce(int copies = 0) : m_copies(copies) {}
    LOGObject* clone() const override {
      if (m_copies == 1) throw VRKThrowable("copied once", "Test.cpp", 1);
      return new CopiedOnce(m_copies + 1);
    }

   private:
    int m_copies;
  };
  const InternalLog log;
  child.onAppend = [&](const std::string& text) {
    CopiedOnce message;
    if (text == "outer") tree.getLogger("a")->info(&message);
  };
  tree.getLogger("a")->info("outer");
  EXPECT_EQ(log.count("VRKThrowable: copied once"), 1);
}

TEST_F(NestedLog, TheLibraryIsNotTakenDownOrConfiguredFromInside) {
  EXPECT_EQ(vrktest::statusInChild([] {
              const vrktest::TempDir dir;
              const std::string document = dir.write("log.xml", "<log4j:configuration threshold='OFF'/>");
              const struct {
                std::function<void()> call;
                const char* operation;
              } CASES[] = {
                  {[] { LOGManager::shutdown(); }, "LOGHierarchy::shutdown -- "},
                  {[] { LOGManager::resetConfiguration(); }, "LOGHierarchy::resetConfiguration -- "},
                  {[&] { EXPECT_EQ(LOG4VRKConfigurator::initialize(document.c_str()), 0); },
                   "LOGDOMConfigurator::doConfigure -- "},
                  {[] { LOG4VRKConfigurator::shutdown(); }, "LOGHierarchy::shutdown -- "},
              };
              RecordingAppender appender;
              LOGManager::getRootLogger()->addAppender(&appender);
              LOGManager::getRootLogger()->setLevel(LOGLevel::INFO_OBJ);
              for (const auto& c : CASES) {
                const InternalLog log;
                appender.onAppend = [&](const std::string&) { c.call(); };
                LOGManager::getRootLogger()->info("outer");
                EXPECT_EQ(log.text(),
                          "log4vrk:ERROR " + std::string(c.operation) + "called from inside a log call, ignored\n");
                LOGLogLog::debug("the internal log is open");
                EXPECT_TRUE(log.contains("is open")) << c.operation;
              }
              EXPECT_EQ(appender.closings, 0);
              EXPECT_TRUE(*LOGManager::getRootLogger()->getLevel() == *LOGLevel::INFO_OBJ);
              EXPECT_EQ(LOGManager::getLoggerRepository()->getThreshold(), LOGLevel::ALL_OBJ);
            }),
            0);
}
