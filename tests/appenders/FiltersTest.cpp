#include "tests/appenders/AppenderFixture.h"

namespace {

constexpr int DENY = LOGFilter::m_DENY, NEUTRAL = LOGFilter::m_NEUTRAL, ACCEPT = LOGFilter::m_ACCEPT;

/// Asks a copy of the filter, so that copying is tested too.
int decide(const LOGFilter& filter, const char* text, LOGLevel* level) {
  TestEvent event(text, level);
  return std::unique_ptr<LOGFilter>(filter.clone())->decide(&event);
}

}  // namespace

TEST(FiltersTest, LevelRangeDeniesWhatIsOutsideItsBounds) {
  const std::tuple<LOGLevel*, LOGLevel*, int, LOGLevel*, int> CASES[] = {
      {LOGLevel::INFO_OBJ, nullptr, 0, LOGLevel::DEBUG_OBJ, DENY},
      {LOGLevel::INFO_OBJ, nullptr, 0, LOGLevel::INFO_OBJ, NEUTRAL},
      {nullptr, LOGLevel::WARN_OBJ, 1, LOGLevel::ERROR_OBJ, DENY},
      {nullptr, LOGLevel::WARN_OBJ, 2, LOGLevel::WARN_OBJ, ACCEPT},
      {nullptr, nullptr, 0, nullptr, NEUTRAL}};
  for (const auto& [min, max, accept, level, expected] : CASES) {
    LOGLevelRangeFilter filter;
    filter.setLevelMin(min);
    filter.setLevelMax(max);
    filter.setAcceptOnMatch(accept);
    EXPECT_EQ(decide(filter, "text", level), expected) << accept;
  }
}

TEST(FiltersTest, LevelRangeMapsItsOptionNamesUnevenly) {
  LOGLevelRangeFilter filter;
  filter.setOption("levelmin", "INFO");
  filter.setOption("LevelMax", "true");
  filter.setOption("AcceptOnMatch", "false");
  EXPECT_EQ(filter.getLevelMin(), LOGLevel::INFO_OBJ);
  EXPECT_EQ(filter.getAcceptOnMatch(), 1);
  EXPECT_EQ(filter.getLevelMax(), nullptr);
  filter.setOption("anything", "WARN");
  EXPECT_EQ(filter.getLevelMax(), LOGLevel::WARN_OBJ);
}

TEST(FiltersTest, LevelMatchLooksAtRankAndSyslogPriorityOnly) {
  LOGLevel notice(30000, "notice", 4);
  LOGLevelMatchFilter filter;
  EXPECT_EQ(filter.getLevelToMatch(), nullptr);
  EXPECT_EQ(filter.decide(nullptr), NEUTRAL) << "without a level it asks for nothing";
  filter.setLevelToMatch("warn");
  EXPECT_EQ(std::unique_ptr<I18NString>(filter.getLevelToMatch())->toUtf8(), "WARN");
  EXPECT_EQ(decide(filter, "text", LOGLevel::INFO_OBJ), NEUTRAL);
  EXPECT_EQ(decide(filter, "text", &notice), ACCEPT);
  filter.setAcceptOnMatch(0);
  EXPECT_EQ(decide(filter, "text", &notice), DENY);
  EXPECT_THROW(decide(filter, "text", nullptr), VRKAssertError);
}

TEST(FiltersTest, StringMatchFindsATextAnywhereAndCaseMatters) {
  const std::pair<const char*, int> CASES[] = {{"disk full", ACCEPT}, {"on disk", ACCEPT}, {"Disk", NEUTRAL}};
  for (const auto& [message, expected] : CASES) {
    LOGStringMatchFilter filter;
    EXPECT_EQ(decide(filter, message, nullptr), NEUTRAL) << "without a text to look for";
    filter.setOption("stringTOmatch", "disk");
    filter.setOption("other", "x");
    EXPECT_EQ(decide(filter, message, nullptr), expected) << message;
    filter.setOption("acceptonmatch", "FALSE");
    EXPECT_EQ(decide(filter, message, nullptr), -expected) << message;
    EXPECT_EQ(decide(LOGDenyAllFilter(), message, nullptr), DENY);
  }
}
