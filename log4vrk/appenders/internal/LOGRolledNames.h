// The names of finished log files.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "log4vrk/appenders/internal/LOGRollCalendar.h"
#include "log4vrk/platform/internal/VRKCompressModule.h"

/// One finished file, under the names that it may have: FILE, the label of its period, and from the second one of a
/// period on a point and a number. Compressed it has an ending besides.
///
/// Thread safety: as a plain struct.
struct LOGRolledFile {
  std::int64_t begin = 0;  // of its period
  long number = 0;         // 0 for the first of a period, which has none in its name
  std::string path;        // without an ending
  bool isPlain = false;
  // By VRKCompressor::Format.
  bool isCompressed[2] = {};
  bool isUnfinished[2] = {};

  bool operator<(const LOGRolledFile& other) const {
    return begin != other.begin ? begin < other.begin : number < other.number;
  }
};

/// Thread safety: constant after construction.
class LOG4VRK_EXPORT_FOR_TESTS LOGRolledNames {
 public:
  LOGRolledNames() = default;
  LOGRolledNames(std::string path, LOGRollCalendar calendar);

  const LOGRollCalendar& calendar() const { return m_calendar; }
  /// Those that are there, the oldest first.
  std::vector<LOGRolledFile> list() const;
  /// A name for a file of this period that comes behind all that are there, and is not in use.
  std::string next(std::int64_t begin) const;

 private:
  LOG4VRK_HIDDEN bool read(std::string_view name, LOGRolledFile& file) const;
  LOG4VRK_HIDDEN std::string path(std::int64_t begin, long number) const;

  std::string m_path;               // of the current file
  std::string m_directory, m_name;  // its parts
  LOGRollCalendar m_calendar;
};
