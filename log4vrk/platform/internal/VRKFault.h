// Failures that cannot be had on demand, for tests.

#pragma once

#include <atomic>

#include "log4vrk/platform/VRKExport.h"

/// Makes a platform operation fail as if the system had refused it. Only tests arm it; a program that never does pays
/// one relaxed load for each operation that could fail.
///
/// Thread safety: any thread may meet an armed fault; arm and disarm from one thread.
class LOG4VRK_EXPORT VRKFault {
 public:
  enum Point {
    LOCK,
    SLEEP,
    ALLOCATION,
    TEXT_CONVERSION,
    FILE_SEEK,
    FILE_WRITE,
    FILE_FLUSH,
    FILE_RENAME,
    FILE_REMOVE,
    FILE_ATTACH,
    LIBRARY,
    SOCKET_OPEN,
    SOCKET_MODE,
    POINTS
  };

  /// Lets `skip` operations at the point succeed, then makes the next `times` of them fail.
  static void arm(Point point, int times = 1, int skip = 0);
  static void disarm();

  /// True when the operation is to fail.
  static bool hit(Point point) { return armed() && take(point); }
  static bool armed() { return m_armed.load(std::memory_order_relaxed); }

 private:
  static bool take(Point point);

  static std::atomic<bool> m_armed;
};
