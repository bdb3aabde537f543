#include "log4vrk/appenders/internal/LOGByteSize.h"
#include "log4vrk/appenders/internal/LOGRollCalendar.h"
#include "log4vrk/platform/internal/VRKTimeZone.h"
#include "tests/support/Tests.h"

namespace {

constexpr long HOUR = 3600, DAY = 24 * HOUR;
constexpr long NOON = 1919332800;  // 2030-10-27 12:00 UTC; that day the clocks of Berlin were set back at 01:00

LOGRollCalendar calendarOf(const char* interval, const char* zone = "UTC", const char* pattern = "") {
  LOGRollInterval parsed;
  EXPECT_TRUE(LOGRollInterval::parse(interval, parsed)) << interval;
  std::string problem;
  LOGRollCalendar calendar(parsed, pattern, VRKTimeZone::find(zone), problem);
  EXPECT_EQ("", problem);
  return calendar;
}

}  // namespace

TEST(LOGRollCalendar, FindsPeriodsThroughTheChangesOfTheClock) {
  const struct {
    const char* interval;
    const char* zone;
    long moment, start, length;
    const char* label;
  } ROWS[] = {
      {"hour", "UTC", NOON + 1, NOON, HOUR, ".2030-10-27T12"},
      {"Minute", "+05:45", NOON + 61, NOON + 60, 60, ".2030-10-27T1746"},
      {"7 minutes", "UTC", NOON - 60, NOON - 6 * 60, 7 * 60, ".2030-10-27T1154"},
      {"7 hours", "UTC", NOON + 11 * HOUR, NOON + 9 * HOUR, 3 * HOUR, ".2030-10-27T21"},  // cut short by midnight
      {"day", "UTC", NOON, NOON - 12 * HOUR, DAY, ".2030-10-27"},
      {"week", "UTC", NOON, NOON - 12 * HOUR - 6 * DAY, 7 * DAY, ".2030-10-21"},
      // Berlin: the hour from 02:00 comes twice.
      {"hour", "Europe/Berlin", NOON - 12 * HOUR + 600, NOON - 12 * HOUR, HOUR, ".2030-10-27T02"},
      {"hour", "Europe/Berlin", NOON - 11 * HOUR + 600, NOON - 11 * HOUR, HOUR, ".2030-10-27T02"},
      {"4 hours", "Europe/Berlin", NOON - 11 * HOUR, NOON - 14 * HOUR, 5 * HOUR, ".2030-10-27T00"},
      {"day", "Europe/Berlin", NOON, NOON - 14 * HOUR, DAY + HOUR, ".2030-10-27"},
      // In spring 02:00 to 03:00 is left out.
      {"hour", "Europe/Berlin", 1901149200, 1901149200, HOUR, ".2030-03-31T03"},
      {"day", "Europe/Berlin", 1901149200, 1901142000, DAY - HOUR, ".2030-03-31"},
      // By half an hour; and a day without a midnight.
      {"hour", "Australia/Lord_Howe", 1901718000 + 60, 1901718000 - 3600, HOUR + HOUR / 2, ".2030-04-07T01"},
      {"day", "America/Sao_Paulo", 1541300400 + HOUR, 1541300400, DAY - HOUR, ".2018-11-04"},
  };
  for (const auto& row : ROWS) {
    const LOGRollCalendar calendar = calendarOf(row.interval, row.zone);
    const LOGRollPeriod period = calendar.at(row.moment);
    const std::string what = std::string(row.interval) + " in " + row.zone + " at " + std::to_string(row.moment);
    EXPECT_EQ(row.start, period.start) << what;
    EXPECT_EQ(row.length, period.end - period.start) << what;
    EXPECT_EQ(row.label, calendar.label(period.begin)) << what;
  }
  // They lie end to end, whichever moment of them is asked for.
  for (const char* zone : {"Europe/Berlin", "Australia/Lord_Howe", "Asia/Kathmandu", "America/Sao_Paulo"}) {
    for (const char* interval : {"20 minutes", "hour", "4 hours", "day", "week"}) {
      const LOGRollCalendar calendar = calendarOf(interval, zone);
      for (LOGRollPeriod each = calendar.at(1919000000), next; each.end < 1919600000; each = next) {
        for (const long moment : {each.start + 1, each.start + (each.end - each.start) / 2, each.end - 1L}) {
          EXPECT_EQ(each.start, calendar.at(moment).start) << interval << zone << moment;
          EXPECT_EQ(each.end, calendar.at(moment).end) << interval << zone << moment;
        }
        next = calendar.at(each.end);
        ASSERT_EQ(each.end, next.start) << interval << zone;
      }
    }
  }
}

TEST(LOGRollCalendar, RefusesWhatItCannotReadBack) {
  for (const char* bad :
       {"", "0 days", "-1 hour", "25 hours", "month", "hourly", "1.5 hours", "day 2", "99999999999 days"}) {
    LOGRollInterval interval{LOGRollInterval::WEEK, 3};
    EXPECT_FALSE(LOGRollInterval::parse(bad, interval)) << bad;
    EXPECT_EQ(I18NString("3 weeks"), interval.toString()) << bad;
  }
  const struct {
    const char* interval;
    const char* pattern;
    bool isGood;
  } PATTERNS[] = {
      {"day", "-%Y%m%d", true},        {"day", ".%d.%m.%y", true}, {"hour", ".%j-%Y_%H", true}, {"day", ".%FT%H", true},
      {"hour", ".%F", false},          {"day", ".%m-%d", false},   {"day", ".%Y/%m/%d", false}, {"day", ".old", false},
      {"30 minutes", ".%FT%H", false}, {"week", ".%G-%V", false},  {"day", ".%F%", false},
  };
  for (const auto& each : PATTERNS) {
    LOGRollInterval interval;
    LOGRollInterval::parse(each.interval, interval);
    std::string problem;
    const LOGRollCalendar calendar(interval, each.pattern, nullptr, problem);
    EXPECT_EQ(each.isGood, problem.empty()) << each.interval << " " << each.pattern;
  }
  std::string problem;
  EXPECT_EQ(I18NString("hour"), LOGRollCalendar::make("", ".%FT%H", nullptr, problem).interval().toString());
  EXPECT_EQ(I18NString("day"), LOGRollCalendar::make("month", ".old", nullptr, problem).interval().toString());

  std::int64_t bytes = 7;
  for (const char* bad : {"", "MB", "-1", "1 TB", "1.5MB", "9223372036854775807kB", "99999999999999999999"}) {
    EXPECT_FALSE(logReadByteSize(bad, bytes)) << bad;
  }
  EXPECT_EQ(7, bytes);
  for (const auto& [text, size] : std::map<const char*, std::int64_t>{{"12", 12}, {"3kb", 3072}, {"2 GB", 1LL << 31}}) {
    EXPECT_TRUE(logReadByteSize(text, bytes));
    EXPECT_EQ(size, bytes) << text;
  }
}
