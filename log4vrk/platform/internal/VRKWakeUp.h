// A wait for a descriptor that other threads can cut short.

#pragma once

#include "log4vrk/platform/VRKExport.h"

/// Thread safety: one thread waits; any thread wakes it.
/// Errors: the constructor raises VRKSystemError when the system has no descriptor to give.
class LOG4VRK_EXPORT_FOR_TESTS VRKWakeUp {
 public:
  VRKWakeUp();
  ~VRKWakeUp();
  VRKWakeUp(const VRKWakeUp&) = delete;
  VRKWakeUp& operator=(const VRKWakeUp&) = delete;

  /// Has the current wait end, or the next one if there is none.
  void wake();
  /// Waits until somebody wakes it, until `descriptor` (-1 for none) can be read, or with `orWritten` written too, or
  /// until the milliseconds are over.
  void wait(int descriptor, bool orWritten, long milliseconds);

 private:
  const int m_descriptor;
};
