// Operations on directories and on the names in them.

#pragma once

#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// Thread safety: without state; any thread.
/// Errors: returned, not raised.
class LOG4VRK_EXPORT VRKFmDir {
 public:
  // The kinds that exists() knows. Any other number counts as REGULAR_FILE.
  static constexpr int DIRECTORY = 0x4000;
  static constexpr int REGULAR_FILE = 0x8180;

  /// True when the path leads to something of that kind; symbolic links are followed.
  static bool exists(const I18NString& path, int kind);
  /// Splits a path at its last slash. `directory` is what stands before it, "/" for a name in the root, and empty when
  /// there is no slash; `file` is the rest.
  static void splitPath(const I18NString& path, I18NString& directory, I18NString& file);
  /// Makes the directory and those of its parents that are missing, accessible to their owner only (mode 0700). True
  /// when the directory is there in the end.
  static bool makeDirectories(const I18NString& path);
  /// False when the system refuses.
  static bool removeFile(const I18NString& path);
  /// Replaces a file that has the new name. False when the system refuses.
  static bool renameFile(const I18NString& from, const I18NString& to);
  /// The names in a directory, "." and ".." among them, in no order. The empty text is the working directory. No names
  /// when the directory cannot be read.
  static std::vector<I18NString> list(const I18NString& directory);
};
