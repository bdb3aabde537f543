// What this process and its machine are called.

#pragma once

#include <string>

#include "log4vrk/platform/VRKExport.h"

/// Thread safety: without state; any thread.
class LOG4VRK_EXPORT VRKProcess {
 public:
  static long id();
  /// Without directories.
  static std::string programName();
  static std::string hostName();
};
