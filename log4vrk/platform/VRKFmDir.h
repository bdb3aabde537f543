// Operations on directories and on the names in them.

#pragma once

#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// Thread safety: without state; any thread.
class LOG4VRK_EXPORT VRKFmDir {
 public:
  // What exists() asks for.
  static constexpr int DIRECTORY = 0x4000;
  static constexpr int REGULAR_FILE = 0x8180;

  /// True when the path leads to something of that kind; symbolic links are followed.
  static bool exists(const I18NString& path, int kind);
  /// `directory` is what stands before the last slash ("/" itself for a name in the root), empty when there is none.
  static void splitPath(const I18NString& path, I18NString& directory, I18NString& file);
  /// Makes the directory and those of its parents that are missing, for their user only (mode 0700). True when the
  /// directory is there.
  static bool makeDirectories(const I18NString& path);
  static bool removeFile(const I18NString& path);
  /// Replaces a file of the new name.
  static bool renameFile(const I18NString& from, const I18NString& to);
  /// The names in a directory ("." when empty), in no order; none when it cannot be read.
  static std::vector<I18NString> list(const I18NString& directory);
};
