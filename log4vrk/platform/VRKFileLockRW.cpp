#include "log4vrk/platform/VRKFileLockRW.h"

VRKFileLockRW::~VRKFileLockRW() = default;

void VRKFileLockRW::lock() { m_mutex.lock(); }

// Gives back a reader's lock, too: here a shared_mutex is a pthread_rwlock_t, which has one unlock for both modes.
void VRKFileLockRW::unlock() { m_mutex.unlock(); }

bool VRKFileLockRW::tryLock() { return m_mutex.try_lock(); }

void VRKFileLockRW::readLock() { m_mutex.lock_shared(); }

bool VRKFileLockRW::tryReadLock() { return m_mutex.try_lock_shared(); }

VRKThreadRWGuard::VRKThreadRWGuard(VRKFileLockRW& lock, Mode mode) VRK_NO_THREAD_SAFETY_ANALYSIS : m_lock(lock) {
  if (mode == READ) {
    m_lock.readLock();
  } else {
    m_lock.lock();
  }
}

VRKThreadRWGuard::~VRKThreadRWGuard() { m_lock.unlock(); }
