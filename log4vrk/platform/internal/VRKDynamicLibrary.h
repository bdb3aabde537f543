// Libraries that are loaded at run time.

#pragma once

#include "log4vrk/platform/I18NString.h"

/// For the library's own use.
///
/// Thread safety: without state; any thread.
class VRKDynamicLibrary {
 public:
  /// Null when it cannot be loaded. Functions are bound when they are first called.
  static void* open(const I18NString& path);
  /// The module of that name beside the library's own file, else where the system looks for libraries. Null when it
  /// cannot be loaded; `reason` then says why it cannot be loaded from beside the library.
  static void* openModule(const char* name, I18NString& reason);
  /// Null when there is none, and for a null handle, which the system would take for the whole process.
  static void* symbol(void* handle, const char* name);
  static bool close(void* handle);
};
