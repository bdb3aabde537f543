// The lock of a file that several writers of this process share.

#pragma once

#include <shared_mutex>

#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKThreadSafety.h"

class VRKFmFile;

/// A read/write lock that belongs to a file. Not recursive. It keeps out threads of this process only. Other processes
/// need no lock: they open the file for appending and write each event in one piece, which keeps the lines whole.
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

  /// The file that the lock stands for. It is lent, and may be null; the lock does nothing with it.
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
