#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

constexpr long LOWEST = std::numeric_limits<std::int32_t>::min();
constexpr long HIGHEST = std::numeric_limits<std::int32_t>::max();

const struct {
  LOGLevel* level;
  long rank;
  const char *name, *otherCase;
  int syslog;
} LEVELS[] = {{LOGLevel::ALL_OBJ, LOWEST, "ALL", "all", 7},      {LOGLevel::DEBUG_OBJ, 10000, "DEBUG", "Debug", 7},
              {LOGLevel::INFO_OBJ, 20000, "INFO", "info", 6},    {LOGLevel::WARN_OBJ, 30000, "WARN", "wArN", 4},
              {LOGLevel::ERROR_OBJ, 40000, "ERROR", "eRROR", 3}, {LOGLevel::FATAL_OBJ, 50000, "FATAL", "fatal", 0},
              {LOGLevel::OFF_OBJ, HIGHEST, "OFF", "oFF", 0}};

}  // namespace

TEST(LOGLevel, TheSevenAreFoundByRankAndByNameAndOrderedByRank) {
  for (const auto& l : LEVELS) {
    EXPECT_TRUE(LOGLevel::toLevel(l.rank) == l.level && *l.level == LOGLevel(l.rank, "a name", l.syslog)) << l.name;
    EXPECT_EQ(l.level->toString(), l.name);
    EXPECT_TRUE(LOGLevel::toLevel(l.name) == l.level && LOGLevel::toLevel(l.otherCase, nullptr) == l.level) << l.name;
    for (const auto& other : LEVELS) EXPECT_EQ(l.level->isGreaterOrEqual(other.level), l.rank >= other.rank);
  }
  EXPECT_EQ(assertionOf([] { LOGLevel::INFO_OBJ->isGreaterOrEqual(nullptr); }), "LOGLevel: VRK_ASSERT(otherLevel);");
  EXPECT_TRUE(LOGLevel(20000, "INFO", 5) != *LOGLevel::INFO_OBJ && LOGLevel(20001, "INFO", 6) != *LOGLevel::INFO_OBJ);
}

TEST(LOGLevel, WhatNamesNoneGivesTheDefault) {
  for (const char* text : {"", " warn", "warn ", "war", "warnn", "\xC4\xB0nfo", "\xC4\xB1nfo", "30000"}) {
    EXPECT_TRUE(LOGLevel::toLevel(text, nullptr) == nullptr && LOGLevel::toLevel(text) == LOGLevel::DEBUG_OBJ) << text;
  }
  for (const long rank : {0L, 30001L, LOWEST + 1, HIGHEST - 1,
                          static_cast<long>((std::int64_t{1} << 32) + (sizeof(long) > 4 ? 10000 : 1))}) {
    EXPECT_EQ(LOGLevel::toLevel(rank, LOGLevel::OFF_OBJ), LOGLevel::OFF_OBJ) << rank;
  }
}
