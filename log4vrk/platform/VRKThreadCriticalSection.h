// The lock of the library's objects, and its scoped guard.

#pragma once

#include <atomic>
#include <cstdint>

#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKThreadSafety.h"

/// A recursive lock: application code that an appender calls may come back to the same object. Each lock() needs an
/// unlock() by the same thread. A copy of an object that has such a lock gets a new one, which is free.
///
/// A thread that forks holds in the child what it held before, and can unlock it there. A recursive mutex
/// of the thread library cannot do that: it knows its owner by the thread's number, which is another in the child.
class LOG4VRK_EXPORT VRK_CAPABILITY("critical section") VRKThreadCriticalSection {
 public:
  /// The integer is accepted for existing callers and changes nothing.
  explicit VRKThreadCriticalSection(int = 0);
  VRKThreadCriticalSection(const VRKThreadCriticalSection&) : VRKThreadCriticalSection() {}
  VRKThreadCriticalSection& operator=(const VRKThreadCriticalSection&) { return *this; }

  /// Raises VRKSystemError when the lock cannot be taken.
  void lock() VRK_ACQUIRE();
  /// False when another thread holds it.
  bool tryLock() VRK_TRY_ACQUIRE(true);
  void unlock() VRK_RELEASE();
  /// True when the calling thread holds it.
  bool isMine() const;

  /// In the child of a fork: frees what threads hold that the child does not have. For the library's own use, when
  /// those threads were not changing what such locks guard.
  LOG4VRK_HIDDEN static void freeInChild();

 private:
  // A std::mutex, which is made in here: its header would cost a file that logs more than those of this library do.
  struct alignas(void*) Mutex {
    unsigned char memory[sizeof(void*) == 8 ? 40 : 24];
  };

  LOG4VRK_HIDDEN bool takeOver(std::uintptr_t owner, std::uintptr_t self);

  Mutex m_mutex;
  std::atomic<std::uintptr_t> m_owner{0};  // the number of the owning thread; 0: free
  int m_depth = 0;                         // how often the owner has it; touched by the owner only
};

/// Holds a critical section for the life of a scope.
class VRK_SCOPED_CAPABILITY VRKThreadGuard {
 public:
  explicit VRKThreadGuard(VRKThreadCriticalSection& section) VRK_ACQUIRE(section) : m_section(section) {
    m_section.lock();
  }
  ~VRKThreadGuard() VRK_RELEASE() { m_section.unlock(); }
  VRKThreadGuard(const VRKThreadGuard&) = delete;
  VRKThreadGuard& operator=(const VRKThreadGuard&) = delete;

 private:
  VRKThreadCriticalSection& m_section;
};
