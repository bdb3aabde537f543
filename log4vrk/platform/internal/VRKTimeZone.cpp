#include "log4vrk/platform/internal/VRKTimeZone.h"

#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKDynamicLibrary.h"
#include "log4vrk/platform/internal/VRKZonesModule.h"

namespace {

// ICU reads offsets after GMT only, and does not know "Z".
I18NString icuName(const I18NString& name) {
  if (name.isEmpty()) return name;
  if (name[0] == u'+' || name[0] == u'-') return "GMT" + name;
  if (vrkEqualIgnoringCase(name, "Z")) return "UTC";
  if (name.length() > 3 && vrkEqualIgnoringCase(name.substring(0, 3), "UTC")) return "GMT" + name.substring(3);
  return name;
}

}  // namespace

// A module that could not be loaded is looked for again next time.
std::shared_ptr<const VRKTimeZone> VRKTimeZone::find(const I18NString& name) {
  static const auto module =
      reinterpret_cast<VRKZonesFind>(VRKDynamicLibrary::moduleFunction(VRK_ZONES_MODULE, VRK_ZONES_FIND));
  return std::shared_ptr<const VRKTimeZone>(module(icuName(name).view()));
}
