// Which file a name leads to, and what several processes need to share one.

#pragma once

#include <cstdint>
#include <string>

#include "log4vrk/platform/VRKExport.h"

/// What the system knows of a file, and steps on names that never cost anybody a file.
///
/// Thread safety: as a plain struct; the operations are without state.
/// Errors: returned, with errno set.
struct LOG4VRK_EXPORT_FOR_TESTS VRKFileFacts {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t modified = 0;  // seconds since the epoch
  std::int32_t modifiedNanoseconds = 0;
  std::uint32_t mode = 0;

  bool isSameFile(const VRKFileFacts& other) const { return device == other.device && inode == other.inode; }
  bool isSameTime(const VRKFileFacts& other) const {
    return modified == other.modified && modifiedNanoseconds == other.modifiedNanoseconds;
  }

  /// False when there is no such file, or a broken link.
  static bool of(const std::string& path, VRKFileFacts& facts);
  static bool of(int descriptor, VRKFileFacts& facts);

  /// Whether anything has the name, a broken link included.
  static bool isInUse(const std::string& path);

  enum Renaming { RENAMED, EXISTS, FAILED };
  /// Never replaces a file. EXISTS when the new name is in use.
  static Renaming renameToNew(const std::string& from, const std::string& to);
  /// Has the link lead to `target`. What is no link is left alone, with EEXIST.
  static bool link(const std::string& path, const std::string& target);
};

/// A file that nobody writes to while this lives, among those who hold what they write (VRKFmFile::hold()).
///
/// Thread safety: not thread-safe.
class VRKFileClaim {
 public:
  explicit VRKFileClaim(const std::string& path);
  ~VRKFileClaim();
  VRKFileClaim(const VRKFileClaim&) = delete;
  VRKFileClaim& operator=(const VRKFileClaim&) = delete;

  /// False when it is gone, or somebody has it.
  bool isOurs() const { return m_isOurs; }
  int descriptor() const { return m_descriptor; }

 private:
  int m_descriptor;
  bool m_isOurs = false;
};
