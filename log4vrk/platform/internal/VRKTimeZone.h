// A time zone other than the process's own.

#pragma once

#include <cstdint>
#include <ctime>
#include <memory>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// The rules of one time zone, as new as the installed ICU has them or the directory ICU_TIMEZONE_FILES_DIR in the
/// environment. The process's own zone is neither asked nor changed; VRKTime::local() is for that.
///
/// Thread safety: any thread.
/// Ownership: the result of find() is shared by all who hold it.
class VRKTimeZone {
 public:
  /// `name` is one that ICU knows ("Europe/Berlin", "UTC"), "Z" for UTC, or an offset to the east, alone or after GMT
  /// or UTC ("+05:45", "-0330", "GMT-3", "UTC+2"). Null when there is no such zone. Raises
  /// VRKThrowable when tovlog4vrk-zones.so, which knows them, cannot be loaded.
  LOG4VRK_EXPORT_FOR_TESTS static std::shared_ptr<const VRKTimeZone> find(const I18NString& name);

  virtual ~VRKTimeZone() = default;

  /// The date and time in the zone, `seconds` after the epoch. Moments after the year 275760 or as long before 1970 are
  /// taken for the last or first of that span. tm_gmtoff and tm_zone are set, so that strftime's %z and %Z are right.
  /// tm_zone is valid as long as this object.
  virtual std::tm at(std::int64_t seconds) const = 0;
};
