// The library's report about itself.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class VRKThrowable;

/// Writes lines about the library's own work to a file of its own. The file is switched on by the settings file
/// "../configuration/logdebug.ini", which is read at the first message: two words, the debug switch and the path of the
/// log (default "log4vrk.log" in the working directory). The log begins afresh with each process, and ends with
/// shutdown() for good. Nothing is ever raised, and what cannot be written is lost.
///
/// The environment variable LOG4VRK_INTERNAL_LOG switches it on too, and takes the place of the settings file's path:
/// it is "stderr", or the path of a file, which is continued when it is there. Set-user-id programs ignore it.
///
/// Thread safety: any thread; a line is written whole.
class LOG4VRK_EXPORT LOGLogLog {
 public:
  /// Reads the settings and opens the file, once in the life of the process. Every message does it too.
  static void init();

  // A line with the matching prefix. An empty message writes nothing. With an error its description follows after a
  // blank.
  static void debug(const I18NString& message);
  static void debug(const char* message);
  static void debug(const I18NString& message, VRKThrowable& error);
  static void warn(const I18NString& message);
  static void warn(const I18NString& message, VRKThrowable& error);
  static void error(const I18NString& message);
  static void error(const I18NString& message, VRKThrowable& error);
  static void error(const char* message);
  static void error(const char* message, VRKThrowable& error);
  static void error(VRKThrowable& error);

  // Kept for programs that ask; messages are written whatever they say.
  static void setInternalDebugging(int enabled);
  static int getInternalDebugging();
  static void setQuietMode(int enabled);
  static int getQuietMode();

  /// Closes the file. It is not opened again.
  static void shutdown();
};
