// Waiting by looking again. Nothing in the library is woken: whoever logs must not pay for waking somebody.

#pragma once

#include <algorithm>
#include <chrono>
#include <thread>

#include "log4vrk/platform/VRKThread.h"

/// What a thread does between two looks: it sleeps for some microseconds, whatever the sleep raises.
void logNap();

/// Looks again and again until `done()` or until the time is over, whichever comes first. Returns what it saw last.
/// A thread is not cancelled meanwhile.
template <typename Done>
bool logWaitUntil(std::chrono::steady_clock::time_point deadline, Done done) {
  while (!done()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    logNap();
  }
  return true;
}

/// The same with a length of time.
template <typename Done>
bool logWaitFor(std::chrono::milliseconds limit, Done done) {
  return logWaitUntil(std::chrono::steady_clock::now() + limit, done);
}

/// Waits for the other side of a queue, which under load is about to act and else may take long. The first looks follow
/// each other at once, for some tens of microseconds; then the thread sleeps between two looks, at first shortly, then
/// longer and longer up to a period.
class LOGPolling {
 public:
  /// In microseconds.
  static constexpr long PERIOD = 10000;

  /// True when the next wait sleeps and is the first, or a period has been slept since this was last true.
  bool beginsPeriod() {
    if (m_looks < LOOKS_AT_ONCE || m_slept < PERIOD) return false;
    m_slept = 0;
    return true;
  }
  /// These raise what the sleep raises. The second goes on with short sleeps, for somebody who holds up a log call.
  void wait() { waitUpTo(PERIOD); }
  void waitShortly() { waitUpTo(LONGEST_SHORT_SLEEP); }
  void reset() {
    m_looks = 0;
    m_sleep = FIRST_SLEEP;
  }

 private:
  static constexpr int LOOKS_AT_ONCE = 4;
  static constexpr long FIRST_SLEEP = 50;
  static constexpr long LONGEST_SHORT_SLEEP = 200;

  void waitUpTo(long longest) {
    if (m_looks < LOOKS_AT_ONCE) {
      ++m_looks;
      std::this_thread::yield();
      return;
    }
    const long sleep = std::min(m_sleep, longest);
    m_slept += sleep;
    m_sleep = std::min(2 * m_sleep, PERIOD);
    VRKThread::sleep(sleep);
  }

  int m_looks = 0;
  long m_sleep = FIRST_SLEEP;
  long m_slept = PERIOD;
};
