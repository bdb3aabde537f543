// What this process and its machine are called, and where it is.

#pragma once

#include <string>

#include "log4vrk/platform/I18NString.h"

/// Thread safety: without state; any thread.
class VRKProcess {
 public:
  static long id();
  /// Without directories.
  static std::string programName();
  static std::string hostName();
  /// The path as seen from the working directory of now, which the program may change later. Empty stays empty.
  static I18NString absolutePath(const I18NString& path);
};
