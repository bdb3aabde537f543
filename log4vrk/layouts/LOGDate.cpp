#include "log4vrk/layouts/LOGDate.h"

#include <ctime>

#include "log4vrk/platform/internal/VRKTime.h"

LOGDate::LOGDate() {
  const VRKTime::Moment now = VRKTime::now();
  m_seconds = now.seconds;
  m_nanoseconds = now.nanoseconds;
}

I18NString LOGDate::toString() const {
  const std::tm time = VRKTime::local(m_seconds);
  char text[128];
  return std::strftime(text, sizeof text, "%c", &time) == 0 ? "N/A" : text;
}
