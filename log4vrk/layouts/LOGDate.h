// A moment, as date formats take it.

#pragma once

#include <cstdint>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// Seconds since the Unix epoch (UTC), and the nanoseconds within that second.
///
/// Thread safety: as a plain struct.
class LOG4VRK_EXPORT LOGDate {
 public:
  /// The present moment.
  LOGDate();
  /// Nanoseconds are 0 to 999999999. They count forwards also before 1970, where the seconds are negative.
  explicit LOGDate(std::int64_t seconds, std::int32_t nanoseconds = 0)
      : m_seconds(seconds), m_nanoseconds(nanoseconds) {}

  std::int64_t getSeconds() const { return m_seconds; }
  void setSeconds(std::int64_t seconds) { m_seconds = seconds; }
  std::int32_t getNanoseconds() const { return m_nanoseconds; }
  void setNanoseconds(std::int32_t nanoseconds) { m_nanoseconds = nanoseconds; }

  /// The date in the process's time zone, as the process's locale writes dates (strftime's %c). "N/A" when that is
  /// empty or takes 128 bytes or more.
  I18NString toString() const;

 private:
  std::int64_t m_seconds;
  std::int32_t m_nanoseconds;
};
