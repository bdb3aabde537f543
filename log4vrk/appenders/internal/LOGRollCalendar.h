// Which stretch of time a log file is for, and how that is written in its name.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class VRKTimeZone;

/// "minute", "2 hours", "day", "1 week": a number, 1 unless given, and a unit, in any case. Counted are minutes and
/// hours from midnight, where the last one of a day may be shorter, days from 1970-01-01 and weeks from a Monday.
///
/// Thread safety: as a plain struct.
struct LOG4VRK_EXPORT_FOR_TESTS LOGRollInterval {
  enum Unit { MINUTE, HOUR, DAY, WEEK };
  Unit unit = DAY;
  long count = 1;

  /// False, and `interval` is left alone, when the text is none, or more than a day of minutes or hours or 10000 days.
  static bool parse(const I18NString& text, LOGRollInterval& interval);
  std::int64_t seconds() const;
  I18NString toString() const;
  /// The pattern of names for files of this interval.
  const char* pattern() const;

  // In seconds of the local calendar, as if every day had 24 hours.
  std::int64_t begin(std::int64_t local) const;
  std::int64_t next(std::int64_t begin) const;
};

/// Thread safety: as a plain struct.
struct LOGRollPeriod {
  // In seconds since the epoch; the end is the start of the next. Both 0: none.
  std::int64_t start = 0;
  std::int64_t end = 0;
  std::int64_t begin = 0;  // the start as the local calendar's clock tells it, whether or not it ever showed that

  bool isSet() const { return end > start; }
};

/// The periods of an interval in a time zone. They lie end to end. Where the clock of the zone is set back over the
/// whole of a period, as at the end of summer time over an hour, that comes twice, with the same label.
///
/// Thread safety: constant after construction.
class LOG4VRK_EXPORT_FOR_TESTS LOGRollCalendar {
 public:
  /// By days, in the process's zone.
  LOGRollCalendar() = default;
  /// A null zone is the process's. Without a pattern labels are written by that of the interval; so they are when the
  /// pattern does not tell one period from another, and `problem` says so.
  LOGRollCalendar(const LOGRollInterval& interval, const std::string& pattern, std::shared_ptr<const VRKTimeZone> zone,
                  std::string& problem);
  /// The same for a text of an interval. Without one it is the shortest of minute, hour and day that the pattern tells,
  /// or the day.
  static LOGRollCalendar make(const I18NString& interval, const I18NString& pattern,
                              std::shared_ptr<const VRKTimeZone> zone, std::string& problem);

  const LOGRollInterval& interval() const { return m_interval; }
  LOGRollPeriod at(std::int64_t seconds) const;
  /// What stands behind the name of the file.
  std::string label(std::int64_t begin) const;
  /// Takes a label off the front of `text`. False when there is none.
  bool takeLabel(std::string_view& text, std::int64_t& begin) const;

 private:
  LOG4VRK_HIDDEN static bool tells(const std::string& pattern, const LOGRollInterval& interval);
  LOG4VRK_HIDDEN std::int64_t offset(std::int64_t seconds) const;
  LOG4VRK_HIDDEN std::int64_t change(std::int64_t before, std::int64_t after) const;

  LOGRollInterval m_interval;
  std::string m_pattern = LOGRollInterval().pattern();
  std::shared_ptr<const VRKTimeZone> m_zone;
};
