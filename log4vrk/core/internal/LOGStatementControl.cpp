#include "log4vrk/core/internal/LOGStatementControl.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "log4vrk/core/LOGManager.h"
#include "log4vrk/platform/internal/VRKErrorText.h"

LOGLeftOut::operator I18NString() const {
  return count == 0 ? I18NString() : I18NString(" (") + static_cast<unsigned long long>(count) + " left out)";
}

// Of the threads that come when it is due, the one that sets the next time logs. What those that come meanwhile leave
// out is said by this one or the next.
bool LOGEverySeconds::admits(double seconds, LOGLeftOut& leftOut) {
  using std::chrono::nanoseconds;
  const std::int64_t now = nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
  std::int64_t next = m_next.load(std::memory_order_relaxed);
  constexpr double LONGEST = 1e9;  // seconds: 31 years, and no sum that overflows
  const auto later = now + static_cast<std::int64_t>(std::clamp(seconds, 0.0, LONGEST) * 1e9);
  if (now < next || !m_next.compare_exchange_strong(next, later)) {
    ++m_leftOut;
    return false;
  }
  leftOut.count = m_leftOut.exchange(0);
  return true;
}

// In English, whatever the locale of the program: a log is read by more people than those before this machine.
LOGErrorText::operator I18NString() const { return I18NString(": ") + vrkErrorText(number) + " [" + number + "]"; }

void logShutdownAndAbort() {
  LOGManager::shutdown();
  std::abort();
}
