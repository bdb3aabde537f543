// The clock, and broken-down time.

#pragma once

#include <cstdint>
#include <ctime>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// Thread safety: without state; any thread.
class LOG4VRK_EXPORT_FOR_TESTS VRKTime {
 public:
  /// A moment of the wall clock: seconds since the Unix epoch and the nanoseconds within that second.
  struct Moment {
    std::int64_t seconds;
    std::int32_t nanoseconds;
  };

  /// Some microseconds behind the system's clock, never ahead of it as long as nobody sets it back. Those of one thread
  /// do not run backwards then either. A clock that has been set is followed within a fraction of a millisecond.
  static Moment now();
  /// In the process's time zone.
  static std::tm local(std::int64_t seconds);
  static std::tm utc(std::int64_t seconds);
  /// When the file was last changed, in seconds since the epoch; false when it cannot be examined.
  static bool fileModified(const I18NString& path, std::int64_t& seconds);
};
