#include "log4vrk/appenders/internal/LOGRollCalendar.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/internal/VRKTime.h"
#include "log4vrk/platform/internal/VRKTimeZone.h"

namespace {

constexpr std::int64_t SECONDS_OF_DAY = 24 * 3600;
constexpr std::int64_t DAYS_BEFORE_THURSDAY = 3;  // the epoch is one, and weeks begin on Mondays

constexpr struct {
  const char* name;
  std::int64_t seconds;
  long most;
  const char* pattern;
} UNITS[] = {
    {"minute", 60, 1440, ".%Y-%m-%dT%H%M"},
    {"hour", 3600, 24, ".%Y-%m-%dT%H"},
    {"day", SECONDS_OF_DAY, 10000, ".%Y-%m-%d"},
    {"week", 7 * SECONDS_OF_DAY, 1000, ".%Y-%m-%d"},
};

std::int64_t floorTo(std::int64_t value, std::int64_t step) {
  const std::int64_t rest = value % step;
  return value - rest - (rest < 0 ? step : 0);
}

}  // namespace

bool LOGRollInterval::parse(const I18NString& text, LOGRollInterval& interval) {
  const std::string words = text.toUtf8();
  char* rest = nullptr;
  long count = std::strtol(words.c_str(), &rest, 10);
  if (rest == words.c_str()) count = 1;
  const std::size_t from = words.find_first_not_of(' ', static_cast<std::size_t>(rest - words.c_str()));
  const std::size_t last = words.find_last_not_of(' ');
  if (from == words.npos) return false;
  const std::string unit = words.substr(from, last + 1 - from);
  for (std::size_t i = 0; i < std::size(UNITS); ++i) {
    const std::string name = UNITS[i].name;
    const bool isUnit = vrkEqualIgnoringCase(I18NString(unit), I18NString(name)) ||
                        vrkEqualIgnoringCase(I18NString(unit), I18NString(name + "s"));
    if (!isUnit || count < 1 || count > UNITS[i].most) continue;
    interval = {static_cast<Unit>(i), count};
    return true;
  }
  return false;
}

std::int64_t LOGRollInterval::seconds() const { return count * UNITS[unit].seconds; }

I18NString LOGRollInterval::toString() const {
  const std::string name = UNITS[unit].name;
  return I18NString(count == 1 ? name : std::to_string(count) + " " + name + "s");
}

const char* LOGRollInterval::pattern() const { return UNITS[unit].pattern; }

std::int64_t LOGRollInterval::begin(std::int64_t local) const {
  const std::int64_t day = floorTo(local, SECONDS_OF_DAY);
  if (unit == MINUTE || unit == HOUR) return day + floorTo(local - day, seconds());
  const std::int64_t shift = unit == WEEK ? DAYS_BEFORE_THURSDAY * SECONDS_OF_DAY : 0;
  return floorTo(day + shift, seconds()) - shift;
}

std::int64_t LOGRollInterval::next(std::int64_t begin) const {
  const std::int64_t end = begin + seconds();
  if (unit == DAY || unit == WEEK) return end;
  return std::min(end, floorTo(begin, SECONDS_OF_DAY) + SECONDS_OF_DAY);
}

LOGRollCalendar::LOGRollCalendar(const LOGRollInterval& interval, const std::string& pattern,
                                 std::shared_ptr<const VRKTimeZone> zone, std::string& problem)
    : m_interval(interval), m_pattern(interval.pattern()), m_zone(std::move(zone)) {
  if (pattern.empty()) return;
  if (tells(pattern, interval)) {
    m_pattern = pattern;
  } else {
    problem = "DatePattern [" + pattern + "] does not tell one " + interval.toString().toUtf8() +
              " from another, or has a slash; [" + m_pattern + "] is used";
  }
}

LOGRollCalendar LOGRollCalendar::make(const I18NString& interval, const I18NString& pattern,
                                      std::shared_ptr<const VRKTimeZone> zone, std::string& problem) {
  const std::string labels = pattern.toUtf8();
  LOGRollInterval chosen;
  if (interval.isEmpty() || !LOGRollInterval::parse(interval, chosen)) {
    for (const auto unit : {LOGRollInterval::DAY, LOGRollInterval::HOUR, LOGRollInterval::MINUTE}) {
      if (tells(labels, {unit, 1})) chosen.unit = unit;
    }
  }
  return LOGRollCalendar(chosen, labels, std::move(zone), problem);
}

// What is written for a period and for the next one has to lead back to each of them. They begin in a month, a day, an
// hour and a minute that differ from each other and from what parsing begins with.
bool LOGRollCalendar::tells(const std::string& pattern, const LOGRollInterval& interval) {
  constexpr std::int64_t MOMENT = 1982149620;  // 2032-10-23 13:07
  LOGRollCalendar calendar;
  calendar.m_interval = interval;
  calendar.m_pattern = pattern;
  const auto isTold = [&](std::int64_t begin) {
    const std::string label = calendar.label(begin);
    std::string_view text = label;
    std::int64_t found = 0;
    return label.find('/') == label.npos && calendar.takeLabel(text, found) && found == begin && text.empty();
  };
  const std::int64_t first = interval.begin(MOMENT);
  return isTold(first) && isTold(interval.next(first));
}

// Between two moments of different offsets: the first moment of the later one.
std::int64_t LOGRollCalendar::change(std::int64_t before, std::int64_t after) const {
  const std::int64_t later = offset(after);
  while (after - before > 1) {
    const std::int64_t middle = before + (after - before) / 2;
    (offset(middle) == later ? after : before) = middle;
  }
  return after;
}

// The local clock may have jumped since the period began, or jump before it ends. A jump ahead out of the period, and
// one back to its begin or before, begin another; any other is inside.
LOGRollPeriod LOGRollCalendar::at(std::int64_t seconds) const {
  LOGRollPeriod period;
  const std::int64_t now = offset(seconds);
  period.begin = m_interval.begin(seconds + now);
  period.start = period.begin - now;
  if (offset(period.start) != now) {
    const std::int64_t jump = change(period.start, seconds);
    const std::int64_t before = offset(jump - 1);
    const bool goesOn = m_interval.begin(jump - 1 + before) == period.begin;
    period.start = goesOn ? period.begin - before : jump;
  }
  const std::int64_t end = m_interval.next(period.begin);
  period.end = end - now;
  const std::int64_t then = offset(period.end);
  if (then != now) {
    const std::int64_t jump = change(seconds, period.end);
    const std::int64_t landing = jump + then;
    const bool goesOn = landing > period.begin && m_interval.begin(landing) == period.begin;
    period.end = goesOn ? end - then : jump;
  }
  return period;
}

std::int64_t LOGRollCalendar::offset(std::int64_t seconds) const {
  return (m_zone == nullptr ? VRKTime::local(seconds) : m_zone->at(seconds)).tm_gmtoff;
}

std::string LOGRollCalendar::label(std::int64_t begin) const {
  const std::tm time = VRKTime::utc(begin);
  char text[256];
  return std::string(text, std::strftime(text, sizeof text, m_pattern.c_str(), &time));
}

// strptime() is generous, with blanks and leading zeros. What it has read must be what would be written.
bool LOGRollCalendar::takeLabel(std::string_view& text, std::int64_t& begin) const {
  const std::string copy(text);
  std::tm time{};
  time.tm_mday = 1;
  const char* const rest = ::strptime(copy.c_str(), m_pattern.c_str(), &time);
  if (rest == nullptr) return false;
  const std::size_t length = static_cast<std::size_t>(rest - copy.c_str());
  const std::int64_t read = ::timegm(&time);
  if (m_interval.begin(read) != read || label(read) != copy.substr(0, length)) return false;
  begin = read;
  text.remove_prefix(length);
  return true;
}
