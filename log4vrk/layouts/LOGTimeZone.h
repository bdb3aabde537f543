// The time zone of a date layout.

#pragma once

#include <cstdint>
#include <ctime>
#include <memory>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class VRKTimeZone;

/// A time zone by its name, or the process's own.
///
/// Thread safety: immutable, except by assignment.
/// Ownership: copies share the rules of a named zone, which go with the last of them.
class LOG4VRK_EXPORT LOGTimeZone {
 public:
  /// The process's time zone. It is asked for at every at(), so that a change of it (tzset) is followed.
  LOGTimeZone() = default;
  /// `name` is one that ICU knows or an offset to the east: "Europe/Berlin", "UTC", "+05:45", "GMT-3". The empty name
  /// is the process's zone; so is an unknown one, after one warning in the internal log.
  explicit LOGTimeZone(const I18NString& name);

  /// The name as it was given, also when it is unknown.
  const I18NString& getName() const { return m_name; }

  /// The date and time in this zone, `seconds` after the epoch. The result's tm_zone is valid as long as a copy of this
  /// zone exists.
  std::tm at(std::int64_t seconds) const;

 private:
  I18NString m_name;
  std::shared_ptr<const VRKTimeZone> m_zone;  // null: the process's zone
};
