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
  /// Has the calling thread run, and use the disk, when nobody else wants to. What the system refuses is left as it is.
  static void lowerPriorityOfThread();
  /// Of the user whose rights the process has.
  static long userId();
  /// The value of a variable; empty when it is not set, and in a process with more rights than its user.
  static std::string environment(const char* name);
  /// The path as seen from the working directory of now, which the program may change later. Empty stays empty.
  static I18NString absolutePath(const I18NString& path);
};
