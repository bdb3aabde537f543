// A file that one owner at a time fills and empties.

#pragma once

#include <cstdint>
#include <string_view>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/internal/VRKOwnedFile.h"

/// Its owner is the object that has it open: while it is, no other object, here or in another process, can open it. The
/// system ends that when the owner's process does, unless a forked child still has the descriptor.
///
/// Thread safety: not thread-safe.
/// Errors: returned; getLastError() tells why.
class VRKSpoolFile {
 public:
  using Result = VRKOwnedFile::Result;
  static constexpr Result OPENED = VRKOwnedFile::OPENED, OWNED_OR_GONE = VRKOwnedFile::OWNED_OR_GONE,
                          FAILED = VRKOwnedFile::FAILED;

  VRKSpoolFile() = default;
  ~VRKSpoolFile();
  VRKSpoolFile(const VRKSpoolFile&) = delete;
  VRKSpoolFile& operator=(const VRKSpoolFile&) = delete;

  /// Makes a file that only its user may read (mode 0600). OWNED_OR_GONE when the name is in use.
  Result create(const I18NString& path);
  /// Opens a regular file that is there; symbolic links are not followed. OWNED_OR_GONE when somebody else has it, or
  /// there is none.
  Result openFree(const I18NString& path);

  /// Writes all the bytes at the end, or none. What was written is in the kernel, not on the disk.
  bool append(std::string_view bytes);
  /// The number of bytes read, fewer than `count` only at the end of the file; -1 on failure.
  long read(std::int64_t offset, char* to, long count);
  /// In bytes, when it was opened and since then as appended.
  std::int64_t size() const { return m_size; }
  /// When it had last been written to as it was opened, in nanoseconds since the epoch.
  std::int64_t modified() const { return m_modified; }

  /// The size of a file that anybody may own, in bytes; 0 when it is no regular file.
  static std::int64_t sizeOf(const I18NString& path);

  /// The errno value of the last failure.
  int getLastError() const { return m_lastError; }

 private:
  Result own(int descriptor);
  Result fails(Result result);

  int m_descriptor = -1;
  int m_lastError = 0;
  std::int64_t m_size = 0;
  std::int64_t m_modified = 0;
};
