#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

using LOGAppenderSkeletonTest = TreeTest;
using LOGAppenderAttachableImplTest = TreeTest;

struct Event : LOGLoggingEvent {
  Event() : LOGLoggingEvent("", &logger, LOGLevel::INFO_OBJ, nullptr) {}
  inline static LOGLogger logger{"event"};
};

}  // namespace

TEST_F(LOGAppenderSkeletonTest, OnlyReportsOnceItIsClosed) {
  Event event;
  root.doAppend(nullptr);
  for (int i = 0; i < 2; ++i) root.finalize();
  root.doAppend(&event);
  root.doAppend(nullptr);
  EXPECT_TRUE(root.closings == 1 && root.texts.empty());
  EXPECT_EQ(log.count("log4vrk:ERROR LOGAppenderSkeleton::doAppend -- VRK Exception occured VRKAssertError: "
                      "VRK_ASSERT(event);, at LOGAppenderSkeleton:"),
            1);
  EXPECT_EQ(log.count("log4vrk:ERROR Attempted to append to closed appender named [root]."), 2);
}

TEST(LOGAppenderSkeleton, NothingIsAppendedOnceCloseHasHadTheLock) {
  for (int round = 0; round < 100; ++round) {
    RecordingAppender appender;
    appender.onAppend = [&](const std::string&) { EXPECT_EQ(appender.closings, 0); };
    onThreads(3, [&](int t) {
      Event event;
      for (int i = 0; i < 20 && t != 0; ++i) appender.doAppend(&event);
      const LOGGuard guard(appender);
      if (t == 0) appender.close();
    });
  }
}

TEST_F(LOGAppenderSkeletonTest, AsksItsFiltersInOrderUntilOneDecides) {
  constexpr int D = LOGFilter::m_DENY, N = LOGFilter::m_NEUTRAL, A = LOGFilter::m_ACCEPT;
  const struct {
    int filters;
    std::vector<int> answers;  // one after the other, whoever is asked
    const char* asked;
    bool written;
  } CASES[] = {
      {0, {}, "", true},
      {2, {D}, "1", false},
      {2, {N, N}, "12", true},
      {3, {N, A}, "12", true},
      {2, {7, -2, N, 2, D}, "11122", false},  // no answer: asked again
  };
  for (const auto& c : CASES) {
    RecordingAppender appender;
    std::string asked;
    std::list<HookFilter> filters;
    for (int f = 1; f <= c.filters; ++f) {
      appender.addFilter(&filters.emplace_back([&asked, &c, f] {
        asked += std::to_string(f);
        return c.answers.at(asked.size() - 1);
      }));
    }
    Event event;
    appender.doAppend(&event);
    EXPECT_EQ(asked, c.asked);
    EXPECT_EQ(appender.texts.size(), c.written ? 1u : 0u);
    appender.clearFilters();
    EXPECT_EQ(appender.getFirstFilter(), nullptr);
  }
  HookFilter filter([] { return A; });
  for (LOGFilter* each : {static_cast<LOGFilter*>(&filter), static_cast<LOGFilter*>(nullptr)}) root.addFilter(each);
  EXPECT_THROW(root.addFilter(&filter), VRKAssertError) << "the chain has lost its tail";
  root.clearFilters();
}

TEST(LOGAppenderSkeleton, EqualityIsByValueAndDecidesAttachingAndRemoving) {
  LOGLayout layout;
  LOGDenyAllFilter filter;
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

TEST_F(LOGAppenderAttachableImplTest, WhileAnAppenderClosesItsLoggerCanBeUsed) {
  for (const bool removing : {false, true}) {
    RecordingAppender slow("slow");
    logger->addAppender(&slow);
    slow.onClose = [&] {
      std::thread([&] {
        logger->info("while it closes");
        logger->addAppender(&other);
        logger->setLevel(LOGLevel::INFO_OBJ);
      }).join();
    };
    removing ? logger->removeAllAppenders() : logger->closeNestedAppenders();
    slow.onClose = nullptr;
    EXPECT_EQ(root.texts.back(), "while it closes");
    EXPECT_TRUE(logger->isAttached(&other) && logger->isAttached(&slow) != removing) << "what came meanwhile stays";
    root.texts.clear();
    for (RecordingAppender* each : {&slow, &other}) logger->removeAppender(each);
  }
}
