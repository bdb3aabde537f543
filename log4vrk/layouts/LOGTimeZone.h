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
/// Thread safety: immutable, except by assignment. Copies share the zone's rules.
class LOG4VRK_EXPORT LOGTimeZone {
 public:
  /// The process's time zone. A change of it (tzset) is followed.
  LOGTimeZone() = default;
  /// A name that ICU knows or an offset to the east: "Europe/Berlin", "UTC", "+05:45", "GMT-3". The empty name is the
  /// process's zone. An unknown one is so too, after one warning in the internal log.
  explicit LOGTimeZone(const I18NString& name);

  /// As it was given, known or not.
  const I18NString& getName() const { return m_name; }

  /// `seconds` since the epoch as a date and time of the zone. tm_zone is valid as long as a copy of this zone.
  std::tm at(std::int64_t seconds) const;

 private:
  I18NString m_name;
  std::shared_ptr<const VRKTimeZone> m_zone;  // null: the process's
};
