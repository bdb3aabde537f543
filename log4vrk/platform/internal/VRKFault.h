// Failures on demand, for tests.

#pragma once

#include <atomic>

#include "log4vrk/platform/VRKExport.h"

/// Makes an operation of the platform fail as if the system had refused it, which tests cannot bring about otherwise.
/// Only tests arm faults. In a program each operation that could fail costs one relaxed load.
///
/// Thread safety: any thread may meet an armed fault. One thread at a time arms and disarms.
class LOG4VRK_EXPORT VRKFault {
 public:
  /// Where a failure can be injected.
  enum Point {
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
    QUEUE_LINES,  // they are not announced before they are written
    // Where a process with a durable queue can be killed.
    QUEUE_ANNOUNCED,
    QUEUE_WRITTEN,
    QUEUE_SETTLED,
    QUEUE_RECOVERED,
    // Where a process that rolls or compresses a file can be killed.
    ROLL_RENAMED,
    ROLL_CREATED,
    COMPRESSION_WRITTEN,
    COMPRESSION_NAMED,
    POINTS  // how many there are
  };

  /// Lets `skip` operations at the point succeed, then makes the next `times` of them fail.
  static void arm(Point point, int times = 1, int skip = 0);
  /// No point fails any more.
  static void disarm();

  /// True when the operation is to fail.
  static bool hit(Point point) { return armed() && take(point); }
  /// Kills the process when the point is to fail.
  static void mayDie(Point point) {
    if (hit(point)) die();
  }
  static bool armed() { return m_armed.load(std::memory_order_relaxed); }

 private:
  static bool take(Point point);
  static void die();

  static std::atomic<bool> m_armed;
};
