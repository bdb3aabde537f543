#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "log4vrk/appenders/LOGAppenderAttachableImpl.h"
#include "log4vrk/appenders/LOGAppenderSkeleton.h"
#include "log4vrk/appenders/LOGErrorHandler.h"
#include "log4vrk/appenders/LOGFilter.h"
#include "log4vrk/appenders/LOGOnlyOnceErrorHandler.h"
#include "log4vrk/core/LOGHashtable.h"
#include "log4vrk/layouts/LOGLayout.h"
#include "log4vrk/platform/VRKFault.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "tests/support/Doubles.h"
#include "tests/support/InternalLog.h"
#include "tests/support/Process.h"

namespace {

using vrktest::RecordingAppender;
using vrktest::Texts;
using vrktest::Tree;

/// Gives its answers one after the other, the last one for ever.
class ScriptedFilter : public LOGFilter {
 public:
  explicit ScriptedFilter(std::vector<int> answers) : m_answers(std::move(answers)) {}
  int decide(LOGLoggingEvent*) override {
    const std::size_t asked = static_cast<std::size_t>(asks++);
    return m_answers[std::min(asked, m_answers.size() - 1)];
  }
  int asks = 0;

 private:
  std::vector<int> m_answers;
};

class CopyableAppender : public LOGAppenderSkeleton {};

struct Event : LOGLoggingEvent {
  explicit Event(LOGLevel* level = LOGLevel::INFO_OBJ) : LOGLoggingEvent("", &logger, level, nullptr) {}
  inline static LOGLogger logger{"event"};
};

}  // namespace

TEST(LOGAppenderSkeleton, OnlyReportsOnceItIsClosed) {
  const InternalLog log;
  RecordingAppender appender("x");
  Event event;
  appender.doAppend(nullptr);
  EXPECT_EQ(
      log.count(
          "log4vrk:ERROR LOGAppenderSkeleton::doAppend -- VRK Exception occured VRKAssertError: VRK_ASSERT(event);, at "
          "LOGAppenderSkeleton:"),
      1);
  appender.finalize();
  appender.finalize();
  appender.doAppend(&event);
  appender.doAppend(nullptr);
  EXPECT_EQ(appender.closings, 1);
  EXPECT_TRUE(appender.texts.empty());
  EXPECT_EQ(log.count("log4vrk:ERROR Attempted to append to closed appender named [x]."), 2);
  EXPECT_EQ(log.lines().size(), 3u);
}

TEST(LOGAppenderSkeleton, NothingIsAppendedOnceCloseHasHadTheLock) {
  class Closing : public LOGAppenderSkeleton {
   public:
    void append(LOGLoggingEvent*) override { EXPECT_TRUE(m_usable); }
    void close() override {
      const LOGGuard guard(*this);
      setClosed(1);
      m_usable = false;
    }

   private:
    bool m_usable = true;
  };
  for (int round = 0; round < 100; ++round) {
    Closing appender;
    std::atomic<int> ready{0};
    const auto write = [&] {
      Event event;
      ++ready;
      for (int i = 0; i < 20; ++i) appender.doAppend(&event);
    };
    std::thread one(write), two(write);
    while (ready < 2) std::this_thread::yield();
    appender.close();
    one.join();
    two.join();
  }
}

TEST(LOGAppenderSkeleton, ItsThresholdIsAnUpperBound) {
  LOGLevel* const LEVELS[] = {LOGLevel::ALL_OBJ,   LOGLevel::DEBUG_OBJ, LOGLevel::INFO_OBJ, LOGLevel::WARN_OBJ,
                              LOGLevel::ERROR_OBJ, LOGLevel::FATAL_OBJ, LOGLevel::OFF_OBJ};
  RecordingAppender appender;
  for (LOGLevel* level : LEVELS) EXPECT_TRUE(appender.isAsSevereAsThreshold(level)) << "no threshold";
  for (LOGLevel* threshold : LEVELS) {
    appender.setThreshold(threshold);
    for (LOGLevel* level : LEVELS) {
      appender.texts.clear();
      Event event(level);
      appender.doAppend(&event);
      EXPECT_EQ(appender.texts.size(), threshold->toInt() >= level->toInt() ? 1u : 0u)
          << threshold->toString().toUtf8() << level->toString().toUtf8();
    }
  }
}

TEST(LOGAppenderSkeleton, AsksItsFiltersInOrderUntilOneDecides) {
  constexpr int D = LOGFilter::m_DENY, N = LOGFilter::m_NEUTRAL, A = LOGFilter::m_ACCEPT;
  const struct {
    std::vector<std::vector<int>> answers;
    std::vector<int> asks;
    bool written;
  } CASES[] = {
      {{}, {}, true},
      {{{D}, {A}}, {1, 0}, false},
      {{{N}, {N}}, {1, 1}, true},
      {{{N}, {A}, {D}}, {1, 1, 0}, true},
      {{{N}, {D}, {A}}, {1, 1, 0}, false},
      {{{7, -2, N}, {2, D}}, {3, 2}, false},  // no answer: asked again
  };
  for (const auto& c : CASES) {
    RecordingAppender appender;
    std::vector<std::unique_ptr<ScriptedFilter>> filters;
    for (const std::vector<int>& answers : c.answers) {
      filters.push_back(std::make_unique<ScriptedFilter>(answers));
      appender.addFilter(filters.back().get());
    }
    EXPECT_EQ(appender.getFirstFilter(), filters.empty() ? nullptr : filters[0].get());
    Event event;
    appender.doAppend(&event);
    EXPECT_EQ(appender.texts.size(), c.written ? 1u : 0u);
    for (std::size_t i = 0; i < filters.size(); ++i) EXPECT_EQ(filters[i]->asks, c.asks[i]);
    appender.clearFilters();
    EXPECT_EQ(appender.getFilter(), nullptr);
  }
  RecordingAppender appender;
  ScriptedFilter filter({A});
  appender.addFilter(&filter);
  appender.addFilter(nullptr);
  EXPECT_THROW(appender.addFilter(&filter), VRKAssertError) << "the chain has lost its tail";
}

TEST(LOGAppenderSkeleton, EqualityIsByValueAndDecidesAttachingAndRemoving) {
  LOGLayout layout;
  ScriptedFilter filter({LOGFilter::m_ACCEPT});
  const std::function<void(LOGAppenderSkeleton&)> DIFFERENCES[] = {
      [](LOGAppenderSkeleton& a) { a.setName("other"); },
      [](LOGAppenderSkeleton& a) { a.close(); },
      [](LOGAppenderSkeleton& a) { a.instance("OtherClass"); },
      [&](LOGAppenderSkeleton& a) { a.setLayout(&layout); },
      [&](LOGAppenderSkeleton& a) { a.addFilter(&filter); },
      [](LOGAppenderSkeleton& a) { a.setThreshold(LOGLevel::WARN_OBJ); },
      [](LOGAppenderSkeleton& a) { a.setErrorHandler(new LOGOnlyOnceErrorHandler); },
  };
  for (const auto& change : DIFFERENCES) {
    RecordingAppender one("x"), two("x");
    if (&change != &DIFFERENCES[6]) {
      one.setErrorHandler(new LOGErrorHandler);
      two.setErrorHandler(new LOGErrorHandler);
    }
    LOGLogger logger("a");
    EXPECT_TRUE(one == two && logger.isAttached(&two) == false);
    logger.addAppender(&one);
    logger.addAppender(&two);
    EXPECT_TRUE(logger.isAttached(&two));
    logger.removeAppender(&two);
    EXPECT_FALSE(logger.isAttached(&one)) << "the equal one was removed";
    change(two);
    logger.addAppender(&one);
    logger.addAppender(&two);
    VRKListIterator<LOGAppenderSkeleton*> attached = logger.getAllAppenders();
    EXPECT_TRUE(one != two && *attached == &one);
    logger.removeAppender(&one);
    EXPECT_EQ(*++attached, &two) << "still on its way through the living list";
    EXPECT_TRUE(logger.isAttached(&two) && !logger.isAttached(&one));
  }
  RecordingAppender appender;
  EXPECT_FALSE(static_cast<LOGObject&>(appender) == LOGObject());
}

TEST(LOGAppenderSkeleton, NullTakesNothingAwayAndACopySharesEverything) {
  LOGLayout layout;
  ScriptedFilter filter({LOGFilter::m_ACCEPT});
  auto original = std::make_unique<CopyableAppender>();
  auto* const handler = new LOGErrorHandler;
  original->setName("x");
  original->setLayout(&layout);
  original->setLayout(nullptr);
  original->setErrorHandler(handler);
  original->setErrorHandler(nullptr);
  original->setErrorHandler(handler);
  original->setThreshold(LOGLevel::WARN_OBJ);
  original->addFilter(&filter);
  EXPECT_FALSE(original->isStale() || original->requiresLayout());
  original->markAsStale();
  const CopyableAppender copy(*original);
  CopyableAppender assigned;
  assigned = copy;
  EXPECT_TRUE(copy == *original && assigned == *original && assigned.isStale());
  original.reset();
  EXPECT_TRUE(copy.getErrorHandler() == handler && assigned.getErrorHandler()->instanceOf() == "LOGErrorHandler");
  EXPECT_TRUE(assigned.getName() == "x" && assigned.getLayout() == &layout && assigned.getFilter() == &filter);
  EXPECT_THROW(copy.clone(), VRKAssertError);
}

TEST(LOGAppenderSkeleton, ItsHandlerMayBeReplacedWhileOthersCompareIt) {
  RecordingAppender one("x"), two("x");
  two.setErrorHandler(new LOGErrorHandler);
  LOGLogger logger("a");
  logger.addAppender(&one);
  std::atomic<bool> done{false};
  std::thread comparing([&] {
    while (!done) logger.isAttached(&two);
  });
  for (int i = 0; i < 5000; ++i) one.setErrorHandler(new LOGErrorHandler);
  done = true;
  comparing.join();
  const InternalLog log;
  auto* const kept = one.getErrorHandler();
  LOGErrorHandler refused;
  VRKFault::arm(VRKFault::LOCK);
  EXPECT_NO_THROW(one.setErrorHandler(&refused));
  VRKFault::disarm();
  EXPECT_EQ(one.getErrorHandler(), kept);
  EXPECT_EQ(log.count("log4vrk:ERROR LOGAppenderSkeleton::setErrorHandler -- unable to lock mutex VRKSystemError: "),
            1);
}

TEST(LOGAppenderAttachableImpl, AnEmptyListTakesNullForAnAnswer) {
  LOGAppenderAttachableImpl list;
  RecordingAppender appender("x");
  Event event;
  EXPECT_EQ(list.appendLoopOnAppenders(&event), 0);
  EXPECT_EQ(list.getAppender("x"), nullptr);
  EXPECT_TRUE(list.getAllAppenders().atEnd());
  EXPECT_FALSE(list.isAttached(nullptr));
  EXPECT_NO_THROW(list.removeAppender(static_cast<LOGAppenderSkeleton*>(nullptr)));
  EXPECT_NO_THROW(list.removeAllAppenders());
  list.addAppender(&appender);
  const std::function<void()> NULLS[] = {[&] { list.isAttached(nullptr); },
                                         [&] { list.removeAppender(static_cast<LOGAppenderSkeleton*>(nullptr)); },
                                         [&] { list.addAppender(nullptr); }};
  for (const auto& call : NULLS) {
    try {
      call();
      ADD_FAILURE();
    } catch (const VRKAssertError& error) {
      EXPECT_EQ(error.getText(), &call == &NULLS[2] ? "VRK_ASSERT(newAppender);" : "VRK_ASSERT(appender);");
      EXPECT_EQ(error.getSource(), "LOGAppenderAttachableImpl");
    }
  }
}

TEST(LOGAppenderAttachableImpl, ActivatesBeforeEveryEventInTheOrderOfAttaching) {
  Texts order;
  RecordingAppender one("one"), two("two");
  LOGAppenderAttachableImpl list;
  for (RecordingAppender* each : {&one, &two}) {
    each->onActivate = [&order, each] { order.push_back("activate " + each->getName().toUtf8()); };
    each->onAppend = [&order, each](const std::string&) { order.push_back("append " + each->getName().toUtf8()); };
    list.addAppender(each);
  }
  Event event;
  EXPECT_EQ(list.appendLoopOnAppenders(&event), 2);
  one.close();
  EXPECT_EQ(list.appendLoopOnAppenders(&event), 2) << "closed ones count";
  EXPECT_EQ(order, (Texts{"activate one", "append one", "activate two", "append two", "activate one", "activate two",
                          "append two"}));
}

TEST(LOGAppenderAttachableImpl, RemovingAllClosesAllAndMarksThoseThatTheTableHolds) {
  for (const bool withTable : {false, true}) {
    RecordingAppender listed("listed"), replaced("replaced"), newer("replaced"), unlisted("unlisted");
    newer.setThreshold(LOGLevel::WARN_OBJ);
    LOGHashtable table;
    table.put(new LOGLoggerKey("listed"), &listed);
    table.put(new LOGLoggerKey("replaced"), &newer);
    LOGLogger logger("a");
    for (RecordingAppender* each : {&listed, &replaced, &unlisted}) logger.addAppender(each);
    logger.removeAllAppenders(withTable ? &table : nullptr);
    EXPECT_TRUE(logger.getAllAppenders().atEnd());
    EXPECT_EQ(listed.closings + replaced.closings + unlisted.closings, 3);
    EXPECT_EQ(newer.closings, 0);
    EXPECT_EQ(listed.isStale(), withTable);
    EXPECT_FALSE(replaced.isStale() || newer.isStale() || unlisted.isStale());
  }
}

TEST(LOGAppenderAttachableImpl, WhileAnAppenderClosesItsLoggerCanBeUsed) {
  const vrktest::Deadline deadline(60);
  const std::function<void(LOGLogger&)> CLOSERS[] = {
      [](LOGLogger& l) { l.closeNestedAppenders(); }, [](LOGLogger& l) { l.removeAllAppenders(); },
      [](LOGLogger& l) { l.getRepository()->getLogger("a")->removeAllAppenders(nullptr); }};
  for (const auto& close : CLOSERS) {
    RecordingAppender slow("slow"), root("root"), late("late");
    Tree tree;
    LOGLogger* const logger = tree.getLogger("a");
    logger->addAppender(&slow);
    tree.getRootLogger()->addAppender(&root);
    slow.onClose = [&] {
      std::thread([&] {
        logger->info("while it closes");
        logger->addAppender(&late);
        logger->setLevel(LOGLevel::INFO_OBJ);
      }).join();
      slow.onClose = nullptr;
    };
    close(*logger);
    EXPECT_EQ(root.texts, (Texts{"while it closes"}));
    EXPECT_TRUE(logger->isAttached(&late)) << "what came meanwhile stays";
    EXPECT_EQ(slow.closings, 1);
  }
}
