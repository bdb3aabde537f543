// How a thread takes a lock of the library: inside the gate, and with its own log calls put off.

#pragma once

#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/core/internal/LOGCallScope.h"
#include "log4vrk/core/internal/LOGGate.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKMutex.h"

/// A library call that holds the lock of an object. It is inside the gate, so that a fork or a configuration run finds
/// no lock held, and its log calls are put off, because their delivery takes locks of its own.
class LOG4VRK_EXPORT VRK_SCOPED_CAPABILITY LOGGuard {
 public:
  /// Raises what the lock raises.
  explicit LOGGuard(const LOGMutex& owner) VRK_ACQUIRE(owner.criticalSection()) : m_guard(owner.criticalSection()) {}
  ~LOGGuard() VRK_RELEASE() {}
  LOGGuard(const LOGGuard&) = delete;
  LOGGuard& operator=(const LOGGuard&) = delete;

 private:
  LOGCallScope m_scope;  // first: it ends after the lock is free
  VRKThreadGuard m_guard;
};

/// The same without waiting: it holds the lock only when no other thread does.
class LOGTryGuard {
 public:
  explicit LOGTryGuard(VRKThreadCriticalSection& section) VRK_NO_THREAD_SAFETY_ANALYSIS : m_section(section),
                                                                                          m_holds(section.tryLock()) {}
  ~LOGTryGuard() VRK_NO_THREAD_SAFETY_ANALYSIS {
    if (m_holds) m_section.unlock();
  }
  LOGTryGuard(const LOGTryGuard&) = delete;
  LOGTryGuard& operator=(const LOGTryGuard&) = delete;

  bool holds() const { return m_holds; }

 private:
  LOGCallScope m_scope;  // first: it ends after the lock is free
  VRKThreadCriticalSection& m_section;
  const bool m_holds;
};

/// A library call that holds one of the library's own locks for a few instructions. Nothing under it can log, so that
/// nothing has to be put off.
class VRK_SCOPED_CAPABILITY LOGLeafGuard {
 public:
  explicit LOGLeafGuard(VRKMutex& mutex) VRK_ACQUIRE(mutex) : m_guard(mutex) {}
  ~LOGLeafGuard() VRK_RELEASE() {}
  LOGLeafGuard(const LOGLeafGuard&) = delete;
  LOGLeafGuard& operator=(const LOGLeafGuard&) = delete;

 private:
  LOGGate::Pass m_pass;
  VRKMutexGuard m_guard;
};
