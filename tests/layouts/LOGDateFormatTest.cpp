#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

constexpr std::int64_t MOMENT = 1785587696;  // 2026-08-01 12:34:56 UTC
constexpr std::int32_t MILLISECOND = 1000000;

std::string append(LOGDateFormat& format, std::int64_t seconds, std::int32_t nanoseconds = 0) {
  I18NString out("<");
  format.append(out, LOGDate(seconds, nanoseconds));
  return out.toUtf8().substr(1);
}

std::string formatted(const char* format, const char* zone, std::int64_t seconds, std::int32_t nanoseconds = 0) {
  return append(*LOGDateFormat::create(format, LOGTimeZone(zone)), seconds, nanoseconds);
}

void setLocalZone(const char* name) {
  ::setenv("TZ", name, 1);
  ::tzset();
}

class DateFormatTest : public testing::Test {
 protected:
  DateFormatTest() { setLocalZone("Asia/Kathmandu"); }
};

}  // namespace

TEST_F(DateFormatTest, WritesTheNamedFormatsInEveryZoneAndCentury) {
  const std::tuple<const char*, const char*, std::int64_t, std::int32_t, const char*> CASES[] = {
      {"ABSOLUTE", "UTC", MOMENT, 789 * MILLISECOND + 999999, "12:34:56,789"},
      {"date", "UTC", MOMENT, 7 * MILLISECOND, "01 Aug 2026 12:34:56,007"},
      {"ISO8601", "", MOMENT, 0, "2026-08-01 18:19:56,000"},
      {"ISO8601", "America/New_York", MOMENT, 0, "2026-08-01 08:34:56,000"},
      {"ABSOLUTE", "Z", MOMENT, 0, "12:34:56,000"},
      {"ABSOLUTE", "+0530", MOMENT, 0, "18:04:56,000"},
      {"ABSOLUTE", "GMT-3", MOMENT, 0, "09:34:56,000"},
      {"ABSOLUTE", "utc+2", MOMENT, 0, "14:34:56,000"},
      {"ISO8601", "UTC", -1, 999 * MILLISECOND, "1969-12-31 23:59:59,999"},
      {"DATE", "+05:45", -5 * 3600, 0, "01 Jan 1970 00:45:00,000"},
      {"ISO8601", "America/New_York", 4102444800, 0, "2099-12-31 19:00:00,000"},
      {"%H:%M:%S.%Q %z", "+05:45", MOMENT, 89 * MILLISECOND, "18:19:56.089 +0545"},
      {"%Q%Q %%Q %%%Q %EQ", "UTC", -1, 999 * MILLISECOND, "999999 %Q %999 %EQ"},
      {"%Y", "UTC", std::numeric_limits<std::int64_t>::max(), 0, "275760"},
      {"%j \u65e5 %H\u00fc", "UTC", MOMENT, 0, "213 \u65e5 12\u00fc"},
      {"%", "UTC", MOMENT, 0, "%"},
      {"%999999999d", "UTC", MOMENT, 0, ""},
  };
  for (const auto& [format, zone, seconds, nanoseconds, expected] : CASES) {
    EXPECT_EQ(formatted(format, zone, seconds, nanoseconds), expected) << format << " " << zone << " " << seconds;
  }
  const std::string all(200, '|');
  EXPECT_EQ(formatted(replaced(all, "|", "%Y-%m-%d|").c_str(), "UTC", MOMENT), replaced(all, "|", "2026-08-01|"));
  EXPECT_EQ(LOGDateFormat::create("null"), nullptr);
}

TEST_F(DateFormatTest, FollowsTheChangesOfSummerTime) {
  const std::tuple<const char*, std::int64_t, const char*, const char*> CHANGES[] = {
      {"Europe/Berlin", 1774745999, "2026-03-29 01:59:59 +0100 CET", "2026-03-29 03:00:00 +0200 CEST"},
      {"America/New_York", 1793512799, "2026-11-01 01:59:59 -0400 EDT", "2026-11-01 01:00:00 -0500 EST"},
  };
  for (const auto& [zone, lastSecond, before, after] : CHANGES) {
    const auto format = LOGDateFormat::create("%Y-%m-%d %H:%M:%S %z %Z", LOGTimeZone(zone));
    EXPECT_EQ(append(*format, lastSecond), before);
    EXPECT_EQ(append(*format, lastSecond + 1), after);
    EXPECT_EQ(append(*format, lastSecond), before) << "a step back";
  }
}

TEST_F(DateFormatTest, KeepsTheTextOfASecondOnlyForThatSecondAndItsZone) {
  const auto absolute = LOGDateFormat::create("ABSOLUTE", LOGTimeZone("UTC")),
             format = LOGDateFormat::create("%H:%M:%S %z");
  for (const auto& [second, text] : {std::pair{0, "00:00:00,005"}, {1, "00:00:01,005"}, {0, "00:00:00,005"}})
    EXPECT_EQ(append(*absolute, second, 5 * MILLISECOND), text) << "the first is not taken for a kept one";
  EXPECT_EQ(formatted("%z", "America/New_York", MOMENT), "-0400");
  EXPECT_EQ(append(*format, MOMENT), "18:19:56 +0545") << "a zone by name leaves the process's alone";
  setLocalZone("UTC");
  EXPECT_EQ(append(*format, MOMENT + 1), "12:34:57 +0000");
}

TEST_F(DateFormatTest, WarnsOnceOfAnUnknownZoneAndUsesLocalTime) {
  for (const char* name : {"Nowhere", "+25:00", "GMT+5:60", "UTC+", "+", "Etc/Unknown", "+05:45x", "Z\u00fcrich"}) {
    const InternalLog log;
    const LOGTimeZone zone{I18NString(name)};
    EXPECT_EQ(append(*LOGDateFormat::create("ABSOLUTE", zone), MOMENT), "18:19:56,000") << name;
    EXPECT_EQ(log.text(),
              std::string("log4vrk:WARN LOGTimeZone -- unknown time zone [") + name + "], local time is used.\n");
  }
}

TEST_F(DateFormatTest, CountsMillisecondsFromTheStartRoundingDown) {
  const auto format = LOGDateFormat::create("relative");
  const std::pair<std::int64_t, const char*> CASES[] = {
      // nanoseconds since the start
      {0, "0"},   {999999, "0"},    {12345678901, "12345"},
      {-1, "-1"}, {-1000001, "-2"}, {4000000000000000000, "4000000000000"}};
  for (const auto& [sinceStart, expected] : CASES) {
    // Counted from a second earlier, so that nothing is negative.
    const std::int64_t nanoseconds = LOGLoggingEvent::getStartTimeNanos() + sinceStart + 1000000000;
    EXPECT_EQ(append(*format, LOGLoggingEvent::getStartTime() - 1 + nanoseconds / 1000000000,
                     static_cast<std::int32_t>(nanoseconds % 1000000000)),
              expected);
  }
}
