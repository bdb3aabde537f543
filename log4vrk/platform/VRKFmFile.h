// A file as appenders and the internal log use it.

#pragma once

#include <cstdint>
#include <string>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// A file that is written at its end, or read word by word. What write() accepted is in the kernel when it returns, so
/// it outlives a crash of the process. Failures are returned, not raised; getLastError() tells why.
///
/// Thread safety: not thread-safe; the caller holds the lock of whoever owns the file.
class LOG4VRK_EXPORT VRKFmFile {
 public:
  // How open() treats the file besides writing at its end.
  static constexpr int EXISTING = 0;
  static constexpr int TRUNCATE = 0x200;
  static constexpr int CREATE_EXCLUSIVE = 0xC0;

  VRKFmFile() = default;
  ~VRKFmFile();
  VRKFmFile(const VRKFmFile&) = delete;
  VRKFmFile& operator=(const VRKFmFile&) = delete;

  bool openForReading(const I18NString& path);
  /// New files get mode 0640 under the process's mask; the mode of an existing file is left alone.
  bool open(const I18NString& path, int flags);
  /// Writes to a descriptor that somebody else owns: close() lets go of it without closing it.
  bool attach(int descriptor);
  bool isOpen() const { return m_descriptor >= 0; }

  /// Moves `offset` bytes from the end. Succeeds without effect where there is nothing to do: on files opened for
  /// appending, and on terminals and pipes. -1 on failure.
  long seekFromEnd(long offset);
  /// The number of bytes written, all of them, or -1.
  long write(const char* bytes, long count);
  /// 0 on failure. Nothing is held back in this process, and the disk is not waited for.
  int flush();
  /// May be repeated.
  void close();

  /// -1 when it cannot be told.
  std::int64_t size();
  /// The next word between white space; false at the end. Only after openForReading().
  bool readWord(std::string& word);

  const I18NString& getName() const { return m_name; }
  /// The errno value of the last failure.
  int getLastError() const { return m_lastError; }

 private:
  bool adopt(int descriptor, const I18NString& name);
  long fails(long result);

  int m_descriptor = -1;
  bool m_owned = false;
  bool m_seeks = false;  // whether moving to the end takes a system call
  int m_lastError = 0;
  I18NString m_name;
};
