// A moment, as date formats take it.

#pragma once

#include <cstdint>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// Seconds since the Unix epoch, and the nanoseconds within that second.
///
/// Thread safety: as a plain struct.
class LOG4VRK_EXPORT LOGDate {
 public:
  /// Now.
  LOGDate();
  /// Before 1970 the seconds are negative and the nanoseconds, 0 to 999999999, still count forwards.
  explicit LOGDate(std::int64_t seconds, std::int32_t nanoseconds = 0)
      : m_seconds(seconds), m_nanoseconds(nanoseconds) {}

  std::int64_t getSeconds() const { return m_seconds; }
  void setSeconds(std::int64_t seconds) { m_seconds = seconds; }
  std::int32_t getNanoseconds() const { return m_nanoseconds; }
  void setNanoseconds(std::int32_t nanoseconds) { m_nanoseconds = nanoseconds; }

  /// In the process's time zone, as its locale writes dates; "N/A" when that takes 128 bytes or more.
  I18NString toString() const;

 private:
  std::int64_t m_seconds;
  std::int32_t m_nanoseconds;
};
