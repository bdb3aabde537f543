// The end of a log file whose writer has been killed.

#pragma once

#include <string>
#include <string_view>

#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKFileJournal.h"

/// Brings to a log file what a killed process was about to write. The kernel cuts a write of a killed process short at
/// any page, so nothing, a part or all of it may be there.
///
/// Thread safety: without state; nobody else writes to the file meanwhile.
struct LOG4VRK_EXPORT_FOR_TESTS VRKLogTail {
  enum Result {
    WAS_WHOLE,  // there was nothing to do
    COMPLETED,
    REPEATED,  // the file is not as it was left, so all of the lines have been appended
    FAILED     // errno tells why; a part may have been appended, and the next attempt goes on from there
  };
  /// `place` is where the lines were to begin. The file may have been renamed since, to a name in the same directory
  /// that begins with the old one. When it is gone the lines go to a new file.
  static Result complete(const std::string& path, const VRKFileJournal::Place& place, std::string_view lines);
};
