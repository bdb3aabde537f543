// Waiting by looking again.

#pragma once

#include <thread>

#include "log4vrk/platform/VRKThread.h"

/// First looks again at once for some tens of microseconds, because under load what is waited for is about to happen, then sleeps
/// between two looks.
class LOGPolling {
 public:
  /// In microseconds.
  static constexpr long PERIOD = 10000;

  /// True when the next wait would sleep.
  bool sleeps() const { return m_looks >= LOOKS_AT_ONCE; }
  /// Raises what the sleep raises.
  void wait() {
    if (sleeps()) {
      VRKThread::sleep(PERIOD);
    } else {
      ++m_looks;
      std::this_thread::yield();
    }
  }
  void reset() { m_looks = 0; }

 private:
  static constexpr int LOOKS_AT_ONCE = 50;

  int m_looks = 0;
};
