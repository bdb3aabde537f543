// What the process may do with files, and how much room there is.

#pragma once

#include <cstdint>

#include "log4vrk/platform/I18NString.h"

/// Thread safety: without state; any thread.
/// Errors: none is raised.
class VRKFileAccess {
 public:
  /// Whether the path is there and may be written to, or files be made in it when it is a directory.
  static bool mayWrite(const I18NString& path);
  /// Bytes that the process may still write on the disk of that path; -1 when it is not known.
  static std::int64_t freeBytes(const I18NString& path);
};
