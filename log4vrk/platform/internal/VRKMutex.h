// The lock of the library's own short critical sections.

#pragma once

#include <mutex>

#include "log4vrk/platform/internal/VRKThreadSafety.h"

/// A lock that is held for a few instructions only: never over a call into application code, and never while another
/// VRKMutex is taken. So it needs no order among its kind. As a static it is ready before the first constructor of the
/// process runs, and its destructor does nothing.
class VRK_CAPABILITY("mutex") VRKMutex {
 public:
  constexpr VRKMutex() = default;
  VRKMutex(const VRKMutex&) = delete;
  VRKMutex& operator=(const VRKMutex&) = delete;

  void lock() VRK_ACQUIRE() { m_mutex.lock(); }
  bool tryLock() VRK_TRY_ACQUIRE(true) { return m_mutex.try_lock(); }
  void unlock() VRK_RELEASE() { m_mutex.unlock(); }

 private:
  std::mutex m_mutex;
};

/// Holds a VRKMutex for the life of a scope.
class VRK_SCOPED_CAPABILITY VRKMutexGuard {
 public:
  explicit VRKMutexGuard(VRKMutex& mutex) VRK_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
  ~VRKMutexGuard() VRK_RELEASE() { m_mutex.unlock(); }
  VRKMutexGuard(const VRKMutexGuard&) = delete;
  VRKMutexGuard& operator=(const VRKMutexGuard&) = delete;

 private:
  VRKMutex& m_mutex;
};
