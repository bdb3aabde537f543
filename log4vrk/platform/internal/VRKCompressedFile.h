// A file that takes the place of a larger one.

#pragma once

#include <functional>
#include <string>

#include "log4vrk/platform/internal/VRKCompressModule.h"
#include "log4vrk/platform/internal/VRKFileFacts.h"

/// Thread safety: without state; one thread at a time for one file.
class VRKCompressedFile {
 public:
  enum Result { MADE, INTERRUPTED, FAILED };

  /// ".gz" or ".zst".
  static const char* ending(VRKCompressor::Format format);

  /// Writes `path` with its ending, through a temporary file that has `.tmp` besides: it is on the disk, with the times
  /// and the mode of the other, before it gets its name, and the other is removed after that. An older temporary file
  /// is overwritten, any other file never. `isOver()` is asked now and then and interrupts the work. Whatever fails,
  /// the other file stays and no temporary one; errno tells why.
  /// Raises VRKThrowable when tovlog4vrk-compress.so cannot be loaded.
  static Result replace(const VRKFileClaim& file, const std::string& path, VRKCompressor::Format format,
                        const std::function<bool()>& isOver);
};
