// Where the files of durable queues are, and what they are called.

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/internal/VRKMappedFile.h"

/// A file is called "<name of the queue>-<number of the process>-<number><ending>". The ending tells what kind it is.
///
/// Thread safety: without state; any thread.
struct LOG4VRK_EXPORT LOGRingFiles {
  static constexpr const char *RING = ".ring", *OUTBOX = ".outbox";

  /// Where files go when nobody says it, the best place first: the user's run-time directory, then the system's memory.
  LOG4VRK_HIDDEN static std::vector<I18NString> defaultDirectories();
  /// The paths of the files of queues of that name, if the directory is this user's alone, or of all rings, in no
  /// order.
  LOG4VRK_HIDDEN static std::vector<I18NString> in(const I18NString& directory, const std::string& name,
                                                   const char* ending = RING);
  static std::vector<I18NString> in(const I18NString& directory);
  /// Removes what starts that were killed have left.
  static void removeUnfinished(const I18NString& directory);
  /// A new file, owned by nobody else, which appears under its name when `begin(file)` has filled it. Null when there
  /// is none; `why` then says so.
  LOG4VRK_HIDDEN static std::unique_ptr<VRKMappedFile> make(const I18NString& directory, const std::string& name,
                                                            std::size_t bytes,
                                                            const std::function<void(VRKMappedFile&)>& begin,
                                                            std::string& why, const char* ending = RING);
  /// Gives the file a name that nobody looks for. Empty when that fails.
  LOG4VRK_HIDDEN static I18NString setAside(VRKMappedFile& file);
};
