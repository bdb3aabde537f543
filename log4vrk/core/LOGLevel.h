// The severity of a log call.

#pragma once

#include <cstdint>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// A severity: a rank, a name and a syslog priority. The library itself hands out the seven singletons below only, and
/// passes them by pointer.
///
/// Thread safety: a level does not change, except by assignment.
/// Ownership: the singletons are there before the first constructor of the process runs, and are never freed.
class LOG4VRK_EXPORT LOGLevel {
 public:
  static LOGLevel* const ALL_OBJ;
  static LOGLevel* const DEBUG_OBJ;
  static LOGLevel* const INFO_OBJ;
  static LOGLevel* const WARN_OBJ;
  static LOGLevel* const ERROR_OBJ;
  static LOGLevel* const FATAL_OBJ;
  static LOGLevel* const OFF_OBJ;
  // The ranks of the levels that programs log at.
  static constexpr int DEBUG_RANK = 10000, INFO_RANK = 20000, WARN_RANK = 30000, ERROR_RANK = 40000, FATAL_RANK = 50000;

  /// Both rank and syslog priority are 50000; the name is empty.
  LOGLevel();
  /// The levels of one name share a copy of it, which is kept for the life of the process.
  LOGLevel(long level, const char* name, long syslogEquivalent);
  LOGLevel(const LOGLevel&) = default;
  LOGLevel& operator=(const LOGLevel&) = default;
  virtual ~LOGLevel();

  /// For existing callers: the singletons need no initialisation.
  static void initialize() {}

  /// The singleton of that name (ASCII, any case, no blanks around it), or DEBUG.
  static LOGLevel* toLevel(const I18NString& name);
  static LOGLevel* toLevel(const I18NString& name, LOGLevel* defaultLevel);
  /// The singleton of exactly that rank, or DEBUG.
  static LOGLevel* toLevel(long rank);
  static LOGLevel* toLevel(long rank, LOGLevel* defaultLevel);

  int toInt() const { return m_level; }
  int getSyslogEquivalent() const { return m_syslogEquivalent; }
  const I18NString& toString() const { return *m_name; }

  /// A null argument raises VRKAssertError.
  bool isGreaterOrEqual(const LOGLevel* other) const;

  /// Rank and syslog priority decide; the name does not.
  bool operator==(const LOGLevel& other) const {
    return m_level == other.m_level && m_syslogEquivalent == other.m_syslogEquivalent;
  }
  bool operator!=(const LOGLevel& other) const { return !(*this == other); }

 private:
  friend struct LOGLevelSingleton;
  constexpr LOGLevel(std::int32_t level, const I18NString* name, std::int32_t syslogEquivalent)
      : m_level(level), m_syslogEquivalent(syslogEquivalent), m_name(name) {}

  std::int32_t m_level;
  std::int32_t m_syslogEquivalent;
  const I18NString* m_name;
};
