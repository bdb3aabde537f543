// The files in which outboxes outlive their processes.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "log4vrk/net/internal/LOGOutboxRing.h"
#include "log4vrk/net/internal/LOGRecoveryFiles.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKMappedFile.h"

/// Makes them, and finds those of dead processes with the same recovery directory. They are where the rings of durable
/// queues are, by another ending.
///
/// Thread safety: not thread-safe.
/// Errors: lines in the internal log, which begin with `reporter`. Nothing is raised but for want of memory.
class LOG4VRK_EXPORT_FOR_TESTS LOGOutboxFiles {
 public:
  LOGOutboxFiles(const I18NString& recoveryDirectory, I18NString reporter);

  /// A new ring of so many bytes for an outbox. Memory of the process when there can be no file.
  std::unique_ptr<VRKMappedFile> make(std::uint64_t bytes) const;
  /// Moves the events of dead processes to the recovery files, and removes what is empty. False when some were not
  /// taken there: it makes sense to call again. A file that stays, since nothing can be done about it, gets its line
  /// once.
  bool recover(LOGRecoveryFiles& to);

 private:
  LOG4VRK_HIDDEN std::unique_ptr<LOGOutboxRing> open(const I18NString& path);
  LOG4VRK_HIDDEN std::vector<std::unique_ptr<LOGOutboxRing>> openAll();
  LOG4VRK_HIDDEN bool move(LOGOutboxRing& ring, LOGRecoveryFiles& to) const;
  LOG4VRK_HIDDEN void setAside(VRKMappedFile& file) const;
  LOG4VRK_HIDDEN void say(const I18NString& path, const std::string& text) const;

  const std::string m_name;
  const I18NString m_reporter;
  std::vector<I18NString> m_said;  // paths of files that something is wrong with
};
