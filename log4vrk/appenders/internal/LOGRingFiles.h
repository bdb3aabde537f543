// Where the files of durable queues are, and what they are called.

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/internal/VRKMappedFile.h"

/// A file is called "<name of the queue>-<number of the process>-<number>.ring".
///
/// Thread safety: without state; any thread.
struct LOG4VRK_EXPORT LOGRingFiles {
  /// Where files go when nobody says it, the best place first: the user's run-time directory, then the system's memory.
  LOG4VRK_HIDDEN static std::vector<I18NString> defaultDirectories();
  /// The paths of the files of queues of that name, or of all queues, in no order.
  LOG4VRK_HIDDEN static std::vector<I18NString> in(const I18NString& directory, const std::string& name);
  static std::vector<I18NString> in(const I18NString& directory);
  /// Removes what starts that were killed have left.
  static void removeUnfinished(const I18NString& directory);
  /// A new file, owned by nobody else, which appears under its name when `begin(file)` has filled it. Null when there
  /// is none; `why` then says so.
  LOG4VRK_HIDDEN static std::unique_ptr<VRKMappedFile> make(const I18NString& directory, const std::string& name,
                                                            std::size_t bytes,
                                                            const std::function<void(VRKMappedFile&)>& begin,
                                                            std::string& why);
  /// Gives the file a name that nobody looks for. Empty when that fails.
  LOG4VRK_HIDDEN static I18NString setAside(VRKMappedFile& file);
};
