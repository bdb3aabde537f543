// A lock by which processes take turns, and what the last of them has noted.

#pragma once

#include <chrono>
#include <string>

#include "log4vrk/platform/I18NString.h"

/// For the life of the object the process has its turn, unless somebody else had it for all of the limit. The file
/// stays when the turn ends; it is made when it is missing, and only its user may write to it. The system ends the turn
/// of a process that is killed.
///
/// Thread safety: not thread-safe.
/// Errors: none is raised; a note that cannot be written is lost.
class VRKTurnFile {
 public:
  VRKTurnFile(const I18NString& path, std::chrono::milliseconds limit);
  ~VRKTurnFile();
  VRKTurnFile(const VRKTurnFile&) = delete;
  VRKTurnFile& operator=(const VRKTurnFile&) = delete;

  bool isOurs() const { return m_isOurs; }
  /// The errno value when the turn could not be had; EWOULDBLOCK for a turn of somebody else's.
  int getLastError() const { return m_lastError; }
  /// Empty when there is none.
  std::string note() const;
  void setNote(const std::string& text) const;

 private:
  int m_descriptor;
  int m_lastError = 0;
  bool m_isOurs = false;
};
