#include "log4vrk/layouts/LOGTimeZone.h"

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKTime.h"
#include "log4vrk/platform/internal/VRKTimeZone.h"

LOGTimeZone::LOGTimeZone(const I18NString& name) : m_name(name) {
  if (name.isEmpty()) return;
  try {
    m_zone = VRKTimeZone::find(name);
    if (m_zone == nullptr) LOGLogLog::warn("LOGTimeZone -- unknown time zone [" + name + "], local time is used.");
  } catch (const VRKThrowable& error) {
    LOGLogLog::warn("LOGTimeZone -- time zone [" + name + "]: " + error.getText() + ", local time is used.");
  }
}

// The process's zone is asked for each time, because a program may change it.
std::tm LOGTimeZone::at(std::int64_t seconds) const {
  return m_zone == nullptr ? VRKTime::local(seconds) : m_zone->at(seconds);
}
