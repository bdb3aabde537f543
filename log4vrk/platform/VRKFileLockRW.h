// The lock of a file that several writers of this process share.

#pragma once

#include <shared_mutex>

#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKThreadSafety.h"

class VRKFmFile;

/// A read/write lock that belongs to a file. It excludes threads of this process only: between processes a file opened
/// for appending keeps the lines whole, because each event is one write.
class LOG4VRK_EXPORT VRK_CAPABILITY("file lock") VRKFileLockRW {
 public:
  VRKFileLockRW() = default;
  virtual ~VRKFileLockRW();
  VRKFileLockRW(const VRKFileLockRW&) = delete;
  VRKFileLockRW& operator=(const VRKFileLockRW&) = delete;

  virtual void lock() VRK_ACQUIRE();
  /// Gives back what any of the other operations took.
  virtual void unlock() VRK_RELEASE();
  virtual bool tryLock() VRK_TRY_ACQUIRE(true);
  virtual void readLock() VRK_ACQUIRE_SHARED();
  virtual bool tryReadLock() VRK_TRY_ACQUIRE_SHARED(true);

  /// The file that the lock speaks for; not owned, may be null.
  void setFile(VRKFmFile* file) { m_file = file; }
  VRKFmFile* getFile() const { return m_file; }

 private:
  std::shared_mutex m_mutex;
  VRKFmFile* m_file = nullptr;
};

/// Holds a VRKFileLockRW for the life of a scope.
class VRK_SCOPED_CAPABILITY VRKThreadRWGuard {
 public:
  enum Mode { READ, WRITE };

  VRKThreadRWGuard(VRKFileLockRW& lock, Mode mode) VRK_ACQUIRE(lock);
  ~VRKThreadRWGuard() VRK_RELEASE();
  VRKThreadRWGuard(const VRKThreadRWGuard&) = delete;
  VRKThreadRWGuard& operator=(const VRKThreadRWGuard&) = delete;

 private:
  VRKFileLockRW& m_lock;
};
