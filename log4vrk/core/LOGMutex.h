// The lock of a shared object.

#pragma once

#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKThreadCriticalSection.h"

/// Gives an object one lock, which is taken with a LOGGuard (core/LOGGuard.h). A copy of the object has a lock of its
/// own.
class LOG4VRK_EXPORT LOGMutex {
 public:
  LOGMutex() = default;
  LOGMutex(const LOGMutex&) = default;
  LOGMutex& operator=(const LOGMutex&) = default;
  virtual ~LOGMutex();

  VRKThreadCriticalSection& criticalSection() const VRK_RETURN_CAPABILITY(m_critSection) { return m_critSection; }

 protected:
  mutable VRKThreadCriticalSection m_critSection{0};
};
