// The severity of a level for who reads lines by it.

#pragma once

#include <algorithm>

#include "log4vrk/core/LOGLevel.h"

/// 0 to 7, as syslog counts them: the level's own priority. FATAL has 0 there, an emergency, which journals write on
/// every terminal of the machine; here it is 2, critical. A level of the program's own with 0 is an emergency.
inline int logSeverity(const LOGLevel& level) {
  return level == *LOGLevel::FATAL_OBJ ? 2 : std::clamp(level.getSyslogEquivalent(), 0, 7);
}
