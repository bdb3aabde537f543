// Libraries that are loaded at run time.

#pragma once

#include "log4vrk/platform/I18NString.h"

/// Opens libraries and finds functions in them. For the library's own use.
///
/// Thread safety: without state; any thread.
/// Ownership: who opens a library closes it, or keeps it open for good.
class VRKDynamicLibrary {
 public:
  /// Null when it cannot be loaded. Its functions are bound when they are first called, so that it loads even if one
  /// that nobody calls is missing.
  static void* open(const I18NString& path);
  /// Opens the module of that name beside this library's own file, or else where the system looks for libraries, and
  /// returns the function of that name in it. The module stays open. Raises VRKThrowable when neither can be loaded,
  /// with what is wrong with the one beside the library, and when there is no such function.
  static void* moduleFunction(const char* module, const char* name);
  /// Null when the library has no such symbol, and for a null handle. (The system would search the whole process for a
  /// null handle, and might find the function of another library.)
  static void* symbol(void* handle, const char* name);
  /// False when the system refuses.
  static bool close(void* handle);
};
