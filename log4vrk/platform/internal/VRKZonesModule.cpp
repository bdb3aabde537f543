// Time zones by name: a library of its own, so that only programs that want them have ICU's rules in memory, which are
// a megabyte.

#include "log4vrk/platform/internal/VRKZonesModule.h"

#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/tznames.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "log4vrk/platform/internal/VRKMutex.h"
#include "log4vrk/platform/internal/VRKTimeZone.h"

namespace {

// What ICU's calendars can express: 100 million days on either side of 1970.
constexpr std::int64_t MOST_SECONDS = 8640000000000;

// "CET", "EDT"; "GMT+5:45" where no abbreviation is in use.
std::string shortName(const icu::TimeZone& zone, double milliseconds, bool summer) {
  icu::UnicodeString id;
  zone.getID(id);
  char region[8] = "";
  UErrorCode status = U_ZERO_ERROR;
  icu::TimeZone::getRegion(id, region, sizeof region, status);
  // In the English of the zone's own country, because ICU knows some abbreviations, such as BST, only there.
  const icu::Locale locale("en", U_SUCCESS(status) ? region : nullptr);

  icu::UnicodeString name;
  status = U_ZERO_ERROR;
  const std::unique_ptr<icu::TimeZoneNames> names(icu::TimeZoneNames::createTZDBInstance(locale, status));
  if (U_SUCCESS(status)) {
    names->getDisplayName(id, summer ? UTZNM_SHORT_DAYLIGHT : UTZNM_SHORT_STANDARD, milliseconds, name);
  }
  if (name.isBogus() || name.isEmpty()) zone.getDisplayName(summer, icu::TimeZone::SHORT, locale, name);
  std::string utf8;
  return name.toUTF8String(utf8);
}

class IcuTimeZone : public VRKTimeZone {
 public:
  explicit IcuTimeZone(std::unique_ptr<const icu::TimeZone> zone) : m_zone(std::move(zone)) {}

  // The offset is ICU's and the calendar gmtime_r()'s. To have localtime_r() do both would take a change of TZ, which
  // is the whole process's.
  std::tm at(std::int64_t seconds) const override {
    seconds = std::clamp(seconds, -MOST_SECONDS, MOST_SECONDS);
    const double milliseconds = 1000.0 * static_cast<double>(seconds);
    std::int32_t standard = 0;
    std::int32_t summer = 0;
    UErrorCode status = U_ZERO_ERROR;
    m_zone->getOffset(milliseconds, false, standard, summer, status);
    const std::int32_t offset = (standard + summer) / 1000;

    const std::time_t shifted = static_cast<std::time_t>(seconds + offset);
    std::tm result{};
    gmtime_r(&shifted, &result);
    result.tm_isdst = summer != 0;
    result.tm_gmtoff = offset;
    result.tm_zone = nameFor(offset, summer != 0, milliseconds);
    return result;
  }

 private:
  const char* nameFor(std::int32_t offset, bool summer, double milliseconds) const {
    const VRKMutexGuard guard(m_mutex);
    std::string& name = m_names[{offset, summer}];
    if (name.empty()) name = shortName(*m_zone, milliseconds, summer);
    return name.c_str();
  }

  const std::unique_ptr<const icu::TimeZone> m_zone;
  mutable VRKMutex m_mutex;
  // By offset and summer time. The results of at() point to the names, so they are kept, and in a map, whose nodes stay
  // where they are.
  mutable std::map<std::pair<std::int32_t, bool>, std::string> m_names VRK_GUARDED_BY(m_mutex);
};

}  // namespace

extern "C" __attribute__((visibility("default"))) VRKTimeZone* vrkZonesFind1(std::u16string_view name);

VRKTimeZone* vrkZonesFind1(std::u16string_view name) {
  std::unique_ptr<const icu::TimeZone> zone(
      icu::TimeZone::createTimeZone(icu::UnicodeString(name.data(), static_cast<std::int32_t>(name.size()))));
  icu::UnicodeString id;
  // ICU makes a zone of any name. Its id tells whether it knew the name.
  if (zone == nullptr || zone->getID(id) == icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID)) return nullptr;
  return new IcuTimeZone(std::move(zone));
}
