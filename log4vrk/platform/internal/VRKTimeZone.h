// A time zone other than the process's own.

#pragma once

#include <cstdint>
#include <ctime>
#include <memory>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// The rules of one time zone, as new as the ICU that is installed (ICU_TIMEZONE_FILES_DIR leads it to newer ones). The
/// process's own zone is neither consulted nor changed; VRKTime::local serves that.
///
/// Thread safety: any thread.
class LOG4VRK_EXPORT VRKTimeZone {
 public:
  /// `name` is one that ICU knows ("Europe/Berlin", "UTC") or an offset to the east, alone or after GMT or UTC
  /// ("+05:45", "-0330", "GMT-3", "UTC+2", "Z"). Null when there is no such zone.
  static std::shared_ptr<const VRKTimeZone> find(const I18NString& name);

  virtual ~VRKTimeZone();

  /// `seconds` since the epoch as a date and time of the zone. Years past 275760 are shown as that year. tm_gmtoff and
  /// tm_zone are set, so that strftime's %z and %Z are right; tm_zone is valid as long as this object.
  virtual std::tm at(std::int64_t seconds) const = 0;
};
