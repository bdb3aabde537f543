#include "tests/appenders/AppenderFixture.h"

namespace {

struct RateLimitFilterTest : AppenderFixture {
  /// What a file appender with the filter has written.
  std::string written() const { return m_dir.read("log"); }

  LOGRateLimitFilter m_filter;
};

}  // namespace

TEST_F(RateLimitFilterTest, SaysHowManyItHasLeftOutBeforeTheNextLineAndAtTheEnd) {
  m_filter.setMaxEvents(2);
  m_filter.setSeconds(1);
  m_filter.setLevel(LOGLevel::WARN_OBJ);
  LOGPatternLayout layout("%p %x %m%n");
  LOGFileAppender appender(&layout, path("log"), 1);
  appender.addFilter(&m_filter);
  LOGNDC::push("request");
  logAt(appender, LOGLevel::INFO_OBJ, "1");
  logAt(appender, LOGLevel::ERROR_OBJ, "not counted");
  logAt(appender, LOGLevel::WARN_OBJ, "2");
  logAt(appender, LOGLevel::WARN_OBJ, "first left out");
  LOGNDC::pop();
  int leftOut = 1;
  const std::string before = "INFO request 1\nERROR request not counted\nWARN request 2\n";
  EXPECT_TRUE(vrktest::eventually([&] {
    logAt(appender, LOGLevel::INFO_OBJ, "again"), ++leftOut;
    return written() != before;
  }));
  const std::string notice = " events left out (at most 2 in 1 s)\n";
  EXPECT_EQ(written(), before + "WARN request " + std::to_string(leftOut - 1) + notice + "INFO  again\n");
  m_filter.setSeconds(1000);
  for (const char* text : {"3", "4", "5"}) logAt(appender, LOGLevel::DEBUG_OBJ, text);
  LOGManager::getRootLogger()->addAppender(&appender);
  LOGManager::getRootLogger()->removeAllAppenders();
  const std::string all = written();
  EXPECT_EQ(all.substr(all.find("again\n") + 6), "DEBUG  3\nDEBUG  2 events left out (at most 2 in 1000 s)\n")
      << "closing tells the rest";
  EXPECT_EQ(m_log.text(), "");
}

TEST_F(RateLimitFilterTest, CountsForAQueueTooAndTellsTheInternalLogWhatNobodyElseWasTold) {
  const std::tuple<long, long, int> CASES[] = {{0, 1, 5},    {-1, 1, 5},   {3, 0, 5},
                                               {3, 1000, 3}, {5, 1000, 5}, {3, std::numeric_limits<long>::max(), 3}};
  for (const auto& [events, seconds, expected] : CASES) {
    auto filter = std::make_unique<LOGRateLimitFilter>();
    filter->setMaxEvents(events);
    filter->setSeconds(seconds);
    const std::unique_ptr<LOGFilter> copy(filter->clone());
    const InternalLog log;
    vrktest::RecordingAppender sink;
    LOGAsyncAppender queue;
    queue.addAppender(&sink);
    queue.addFilter(filter.get());
    AppenderFixture::log(queue, "1", "2", "3", "4", "5");
    TestEvent event("one");
    EXPECT_EQ(copy->decide(&event), LOGFilter::m_NEUTRAL) << "a copy counts anew";
    queue.close();  // by the program itself
    EXPECT_EQ(sink.texts.size(), static_cast<std::size_t>(expected));
    filter.reset();
    EXPECT_EQ(log.count("LOGRateLimitFilter -- no line says that 2 events were left out"), expected == 3) << events;
  }
}
