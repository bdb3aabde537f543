#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

/// Gives its answers one after the other, the last one for ever.
class ScriptedFilter : public LOGFilter {
 public:
  explicit ScriptedFilter(std::vector<int> answers) : m_answers(std::move(answers)) {}
  int decide(LOGLoggingEvent*) override { return m_answers[std::min(asks++, m_answers.size() - 1)]; }
  std::size_t asks = 0;

 private:
  std::vector<int> m_answers;
};

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
  appender.finalize();
  appender.finalize();
  appender.doAppend(&event);
  appender.doAppend(nullptr);
  EXPECT_TRUE(appender.closings == 1 && appender.texts.empty());
  const std::string line =
      "log4vrk:ERROR LOGAppenderSkeleton::doAppend -- VRK Exception occured VRKAssertError: VRK_ASSERT(event);, at ";
  EXPECT_EQ(log.count(line + "LOGAppenderSkeleton:"), 1);
  EXPECT_EQ(log.count("log4vrk:ERROR Attempted to append to closed appender named [x]."), 2);
}

TEST(LOGAppenderSkeleton, NothingIsAppendedOnceCloseHasHadTheLock) {
  class Closing : public LOGAppenderSkeleton {
   public:
    void append(LOGLoggingEvent*) override { EXPECT_EQ(getClosed(), 0); }
    void close() override {
      const LOGGuard guard(*this);
      setClosed(1);
    }
  };
  for (int round = 0; round < 100; ++round) {
    Closing appender;
    onThreads(3, [&](int t) {
      if (t == 0) return appender.close();
      Event event;
      for (int i = 0; i < 20; ++i) appender.doAppend(&event);
    });
  }
}

TEST(LOGAppenderSkeleton, ItsThresholdIsAnUpperBound) {
  LOGLevel* const LEVELS[] = {LOGLevel::ALL_OBJ, LOGLevel::WARN_OBJ, LOGLevel::ERROR_OBJ, LOGLevel::OFF_OBJ};
  RecordingAppender appender;
  EXPECT_TRUE(appender.isAsSevereAsThreshold(LOGLevel::OFF_OBJ)) << "no threshold";
  for (LOGLevel* threshold : LEVELS) {
    appender.setThreshold(threshold);
    for (LOGLevel* level : LEVELS) {
      appender.texts.clear();
      Event event(level);
      appender.doAppend(&event);
      EXPECT_EQ(appender.texts.size(), threshold->toInt() >= level->toInt() ? 1u : 0u);
    }
  }
}

TEST(LOGAppenderSkeleton, AsksItsFiltersInOrderUntilOneDecides) {
  constexpr int D = LOGFilter::m_DENY, N = LOGFilter::m_NEUTRAL, A = LOGFilter::m_ACCEPT;
  const struct {
    std::vector<std::vector<int>> answers;
    std::vector<std::size_t> asks;
    bool written;
  } CASES[] = {
      {{}, {}, true},
      {{{D}, {A}}, {1, 0}, false},
      {{{N}, {N}}, {1, 1}, true},
      {{{N}, {A}, {D}}, {1, 1, 0}, true},
      {{{7, -2, N}, {2, D}}, {3, 2}, false},  // no answer: asked again
  };
  for (const auto& c : CASES) {
    RecordingAppender appender;
    std::vector<ScriptedFilter*> filters;
    for (const auto& answers : c.answers) appender.addFilter(filters.emplace_back(new ScriptedFilter(answers)));
    Event event;
    appender.doAppend(&event);
    EXPECT_EQ(appender.texts.size(), c.written ? 1u : 0u);
    appender.clearFilters();
    EXPECT_EQ(appender.getFirstFilter(), nullptr);
    for (std::size_t i = 0; i < filters.size(); ++i) {
      EXPECT_EQ(filters[i]->asks, c.asks[i]);
      delete filters[i];
    }
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
      [](auto& a) { a.setName("other"); },
      [](auto& a) { a.close(); },
      [](auto& a) { a.instance("OtherClass"); },
      [&](auto& a) { a.setLayout(&layout); },
      [&](auto& a) { a.addFilter(&filter); },
      [](auto& a) { a.setThreshold(LOGLevel::WARN_OBJ); },
      [](auto& a) { a.setErrorHandler(new LOGOnlyOnceErrorHandler); },
  };
  for (const auto& change : DIFFERENCES) {
    RecordingAppender one("x"), two("x");
    for (RecordingAppender* each : {&one, &two}) each->setErrorHandler(new LOGErrorHandler);
    LOGLogger logger("a");
    logger.addAppender(&one);
    logger.removeAppender(&two);
    EXPECT_TRUE(one == two && !logger.isAttached(&one)) << "the equal one was removed";
    change(two);
    for (RecordingAppender* each : {&one, &two, &one}) logger.addAppender(each);
    VRKListIterator<LOGAppenderSkeleton*> attached = logger.getAllAppenders();
    logger.removeAppender(&one);
    EXPECT_TRUE(one != two && *attached == &one && *++attached == &two) << "still on its way through the living list";
    EXPECT_TRUE(logger.isAttached(&two) && !logger.isAttached(&one));
  }
}

TEST(LOGAppenderSkeleton, ItsHandlerMayBeReplacedWhileOthersCompareIt) {
  RecordingAppender one("x"), two("x");
  two.setErrorHandler(new LOGErrorHandler);
  LOGLogger logger("a");
  logger.addAppender(&one);
  const Meanwhile comparing({[&] { logger.isAttached(&two); }});
  for (int i = 0; i < 5000; ++i) one.setErrorHandler(new LOGErrorHandler);
}

TEST(LOGAppenderAttachableImpl, RemovingAllClosesAllAndMarksThoseThatTheTableHolds) {
  RecordingAppender listed("listed"), replaced("replaced"), newer("replaced"), unlisted("unlisted");
  LOGHashtable table;
  table.put(new LOGLoggerKey("listed"), &listed);
  table.put(new LOGLoggerKey("replaced"), &newer);
  LOGLogger logger("a");
  for (RecordingAppender* each : {&listed, &replaced, &unlisted}) logger.addAppender(each);
  logger.removeAllAppenders(&table);
  EXPECT_TRUE(logger.getAllAppenders().atEnd());
  EXPECT_TRUE(listed.closings == 1 && replaced.closings == 1 && unlisted.closings == 1 && newer.closings == 0);
  EXPECT_TRUE(listed.isStale() && !replaced.isStale() && !newer.isStale() && !unlisted.isStale());
}

TEST(LOGAppenderAttachableImpl, WhileAnAppenderClosesItsLoggerCanBeUsed) {
  const Deadline deadline(60);
  for (const bool removing : {false, true}) {
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
    removing ? logger->removeAllAppenders() : logger->closeNestedAppenders();
    EXPECT_EQ(root.texts, (Texts{"while it closes"}));
    EXPECT_TRUE(logger->isAttached(&late) && logger->isAttached(&slow) != removing) << "what came meanwhile stays";
  }
}
