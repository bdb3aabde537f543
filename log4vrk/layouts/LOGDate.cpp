#include "log4vrk/layouts/LOGDate.h"

#include <ctime>

#include "log4vrk/platform/internal/VRKTime.h"

// The clock of the events, so that a date made here can be compared with theirs.
LOGDate::LOGDate() {
  const VRKTime::Moment now = VRKTime::now();
  m_seconds = now.seconds;
  m_nanoseconds = now.nanoseconds;
}

I18NString LOGDate::toString() const {
  const std::tm time = VRKTime::local(m_seconds);
  char text[128];
  // strftime returns 0 for a text that does not fit, and for an empty one.
  return std::strftime(text, sizeof text, "%c", &time) == 0 ? "N/A" : text;
}
