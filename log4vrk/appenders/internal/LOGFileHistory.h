// What becomes of finished log files: they are compressed, and removed when there are too many.

#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "log4vrk/appenders/internal/LOGRolledNames.h"

/// How much is kept. 0: without a limit.
///
/// Thread safety: as a plain struct.
struct LOGHistoryLimits {
  long files = 0;
  std::int64_t age = 0;    // in seconds since the end of a file's period
  std::int64_t bytes = 0;  // of all finished files

  bool any() const { return files > 0 || age > 0 || bytes > 0; }
};

/// A failure is told once, until the same works again.
///
/// Thread safety: not thread-safe.
class LOG4VRK_EXPORT_FOR_TESTS LOGFailureOnce {
 public:
  void failed(const std::string& text);
  void worked() { m_said = false; }

 private:
  bool m_said = false;
};

/// Reads what is there each time, so that what earlier and other processes have left counts. A file that somebody holds
/// is left alone until later.
///
/// Thread safety: not thread-safe. Several objects and processes may tidy the same files at once.
/// Errors: one line in the internal log, until it works again; what failed is tried again next time.
class LOG4VRK_EXPORT_FOR_TESTS LOGFileHistory {
 public:
  LOGFileHistory(LOGRolledNames names, LOGHistoryLimits limits, std::optional<VRKCompressor::Format> format)
      : m_names(std::move(names)), m_limits(limits), m_format(format) {}

  /// `begin` is that of the current period, from which ages are counted. False when something is left for later.
  bool tidy(std::int64_t begin, const std::function<bool()>& isOver);

 private:
  LOG4VRK_HIDDEN void removeTooMany(std::int64_t begin);
  LOG4VRK_HIDDEN void removeTooLarge();
  LOG4VRK_HIDDEN void settle(const LOGRolledFile& file, const std::function<bool()>& isOver);
  LOG4VRK_HIDDEN void remove(const LOGRolledFile& file);
  LOG4VRK_HIDDEN bool removeName(const std::string& path);

  const LOGRolledNames m_names;
  const LOGHistoryLimits m_limits;
  const std::optional<VRKCompressor::Format> m_format;
  LOGFailureOnce m_removal, m_compression;
  bool m_isDone = true;
};
