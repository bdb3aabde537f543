// Log statements whose text is put together only when it is wanted.
//
//   LOG4VRK_INFO(logger, "order " << id << " accepted");
//
// LOGMessage.h says what can stand between the <<. It is evaluated only when the level is enabled, and so are
// conditions. File, line and function of the statement go along with the event. A statement whose level is disabled
// costs one comparison; what else it needs lies apart from the code around it.
//
// Thread safety: any thread. Counts are of all threads together.

#pragma once

#include <cerrno>
#include <limits>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/internal/LOGStatement.h"
#include "log4vrk/core/internal/LOGStatementControl.h"

#ifndef LOG4VRK_LOWEST_RANK
/// Statements of lower ranks are not compiled. A build sets another, such as LOG4VRK_LOWEST_RANK=LOGLevel::INFO_RANK.
#define LOG4VRK_LOWEST_RANK std::numeric_limits<int>::min()
#endif

/// Logs what is put together with <<: `LOG4VRK_INFO(logger, "order " << id)`.
/// @{
#define LOG4VRK_DEBUG(logger, ...) \
  LOG4VRK_STATEMENT_PLAIN(logger, LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ, __VA_ARGS__)
#define LOG4VRK_INFO(logger, ...) LOG4VRK_STATEMENT_PLAIN(logger, LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ, __VA_ARGS__)
#define LOG4VRK_WARN(logger, ...) LOG4VRK_STATEMENT_PLAIN(logger, LOGLevel::WARN_RANK, LOGLevel::WARN_OBJ, __VA_ARGS__)
#define LOG4VRK_ERROR(logger, ...) \
  LOG4VRK_STATEMENT_PLAIN(logger, LOGLevel::ERROR_RANK, LOGLevel::ERROR_OBJ, __VA_ARGS__)
#define LOG4VRK_FATAL(logger, ...) \
  LOG4VRK_STATEMENT_PLAIN(logger, LOGLevel::FATAL_RANK, LOGLevel::FATAL_OBJ, __VA_ARGS__)
/// @}

/// As LOG4VRK_INFO and its siblings, if the condition holds, which is evaluated after the level.
/// @{
#define LOG4VRK_DEBUG_IF(logger, condition, ...) \
  LOG4VRK_STATEMENT_IF(logger, LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ, condition, __VA_ARGS__)
#define LOG4VRK_INFO_IF(logger, condition, ...) \
  LOG4VRK_STATEMENT_IF(logger, LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ, condition, __VA_ARGS__)
#define LOG4VRK_WARN_IF(logger, condition, ...) \
  LOG4VRK_STATEMENT_IF(logger, LOGLevel::WARN_RANK, LOGLevel::WARN_OBJ, condition, __VA_ARGS__)
#define LOG4VRK_ERROR_IF(logger, condition, ...) \
  LOG4VRK_STATEMENT_IF(logger, LOGLevel::ERROR_RANK, LOGLevel::ERROR_OBJ, condition, __VA_ARGS__)
#define LOG4VRK_FATAL_IF(logger, condition, ...) \
  LOG4VRK_STATEMENT_IF(logger, LOGLevel::FATAL_RANK, LOGLevel::FATAL_OBJ, condition, __VA_ARGS__)
/// @}

/// As LOG4VRK_INFO and its siblings, the first time that the statement is enabled, in the life of the process.
/// @{
#define LOG4VRK_DEBUG_ONCE(logger, ...) \
  LOG4VRK_STATEMENT_ONCE(logger, LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ, __VA_ARGS__)
#define LOG4VRK_INFO_ONCE(logger, ...) \
  LOG4VRK_STATEMENT_ONCE(logger, LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ, __VA_ARGS__)
#define LOG4VRK_WARN_ONCE(logger, ...) \
  LOG4VRK_STATEMENT_ONCE(logger, LOGLevel::WARN_RANK, LOGLevel::WARN_OBJ, __VA_ARGS__)
#define LOG4VRK_ERROR_ONCE(logger, ...) \
  LOG4VRK_STATEMENT_ONCE(logger, LOGLevel::ERROR_RANK, LOGLevel::ERROR_OBJ, __VA_ARGS__)
#define LOG4VRK_FATAL_ONCE(logger, ...) \
  LOG4VRK_STATEMENT_ONCE(logger, LOGLevel::FATAL_RANK, LOGLevel::FATAL_OBJ, __VA_ARGS__)
/// @}

/// As LOG4VRK_INFO and its siblings, the first time, then each n-th.
/// @{
#define LOG4VRK_DEBUG_EVERY_N(logger, n, ...) \
  LOG4VRK_STATEMENT_EVERY_N(logger, LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ, n, __VA_ARGS__)
#define LOG4VRK_INFO_EVERY_N(logger, n, ...) \
  LOG4VRK_STATEMENT_EVERY_N(logger, LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ, n, __VA_ARGS__)
#define LOG4VRK_WARN_EVERY_N(logger, n, ...) \
  LOG4VRK_STATEMENT_EVERY_N(logger, LOGLevel::WARN_RANK, LOGLevel::WARN_OBJ, n, __VA_ARGS__)
#define LOG4VRK_ERROR_EVERY_N(logger, n, ...) \
  LOG4VRK_STATEMENT_EVERY_N(logger, LOGLevel::ERROR_RANK, LOGLevel::ERROR_OBJ, n, __VA_ARGS__)
#define LOG4VRK_FATAL_EVERY_N(logger, n, ...) \
  LOG4VRK_STATEMENT_EVERY_N(logger, LOGLevel::FATAL_RANK, LOGLevel::FATAL_OBJ, n, __VA_ARGS__)
/// @}

/// As LOG4VRK_INFO and its siblings, at most once in so many seconds, with the number of those left out behind the
/// text.
/// @{
#define LOG4VRK_DEBUG_EVERY(logger, seconds, ...) \
  LOG4VRK_STATEMENT_EVERY(logger, LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ, seconds, __VA_ARGS__)
#define LOG4VRK_INFO_EVERY(logger, seconds, ...) \
  LOG4VRK_STATEMENT_EVERY(logger, LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ, seconds, __VA_ARGS__)
#define LOG4VRK_WARN_EVERY(logger, seconds, ...) \
  LOG4VRK_STATEMENT_EVERY(logger, LOGLevel::WARN_RANK, LOGLevel::WARN_OBJ, seconds, __VA_ARGS__)
#define LOG4VRK_ERROR_EVERY(logger, seconds, ...) \
  LOG4VRK_STATEMENT_EVERY(logger, LOGLevel::ERROR_RANK, LOGLevel::ERROR_OBJ, seconds, __VA_ARGS__)
#define LOG4VRK_FATAL_EVERY(logger, seconds, ...) \
  LOG4VRK_STATEMENT_EVERY(logger, LOGLevel::FATAL_RANK, LOGLevel::FATAL_OBJ, seconds, __VA_ARGS__)
/// @}

/// As LOG4VRK_INFO and its siblings, with the text and number of errno behind it, as it was before the statement.
/// @{
#define LOG4VRK_DEBUG_ERRNO(logger, ...) \
  LOG4VRK_STATEMENT_ERRNO(logger, LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ, __VA_ARGS__)
#define LOG4VRK_INFO_ERRNO(logger, ...) \
  LOG4VRK_STATEMENT_ERRNO(logger, LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ, __VA_ARGS__)
#define LOG4VRK_WARN_ERRNO(logger, ...) \
  LOG4VRK_STATEMENT_ERRNO(logger, LOGLevel::WARN_RANK, LOGLevel::WARN_OBJ, __VA_ARGS__)
#define LOG4VRK_ERROR_ERRNO(logger, ...) \
  LOG4VRK_STATEMENT_ERRNO(logger, LOGLevel::ERROR_RANK, LOGLevel::ERROR_OBJ, __VA_ARGS__)
#define LOG4VRK_FATAL_ERRNO(logger, ...) \
  LOG4VRK_STATEMENT_ERRNO(logger, LOGLevel::FATAL_RANK, LOGLevel::FATAL_OBJ, __VA_ARGS__)
/// @}

/// As LOG4VRK_INFO and its siblings, at a level that is known at run time only, such as one of the program's own.
#define LOG4VRK_LOG(logger, level, ...)                                                                         \
  do {                                                                                                          \
    LOGLogger* const log4vrkLogger = (logger);                                                                  \
    LOGLevel* const log4vrkLevel = (level);                                                                     \
    if (log4vrkLogger->isEnabledFor(log4vrkLevel)) {                                                            \
      LOG4VRK_STATEMENT((LOGTargetAtLevel{log4vrkLogger, log4vrkLevel}), nullptr, LOGNoParts() << __VA_ARGS__); \
    }                                                                                                           \
  } while (false)

/// A level of the program's own, for LOG4VRK_LOG: `LOG4VRK_LEVEL(TRACE, 5000, 7)` in a header defines TRACE(). The rank
/// is between those of its neighbours, DEBUG being 10000; the other number is its syslog priority, 0 to 7.
#define LOG4VRK_LEVEL(name, rank, syslogPriority)                                    \
  inline LOGLevel* name() {                                                          \
    static LOGLevel* const log4vrkLevel = new LOGLevel(rank, #name, syslogPriority); \
    return log4vrkLevel;                                                             \
  }

/// Unless the condition holds, logs at FATAL, delivers everything, and aborts.
#define LOG4VRK_CHECK(logger, condition, ...)                                 \
  do {                                                                        \
    if (!(condition)) {                                                       \
      LOG4VRK_FATAL(logger, "check failed: " #condition ": " << __VA_ARGS__); \
      logShutdownAndAbort();                                                  \
    }                                                                         \
  } while (false)

/// @cond
// What the statements are made of. `admits` is evaluated after the level.
#define LOG4VRK_STATEMENT_PLAIN(logger, rank, level, ...) \
  LOG4VRK_STATEMENT_GUARDED(logger, rank, level, true, LOGNoParts() << __VA_ARGS__)
#define LOG4VRK_STATEMENT_IF(logger, rank, level, condition, ...) \
  LOG4VRK_STATEMENT_GUARDED(logger, rank, level, (condition), LOGNoParts() << __VA_ARGS__)
#define LOG4VRK_STATEMENT_ONCE(logger, rank, level, ...)                                               \
  do {                                                                                                 \
    static LOGOnce log4vrkOnce;                                                                        \
    LOG4VRK_STATEMENT_GUARDED(logger, rank, level, log4vrkOnce.admits(), LOGNoParts() << __VA_ARGS__); \
  } while (false)
#define LOG4VRK_STATEMENT_EVERY_N(logger, rank, level, n, ...)                                           \
  do {                                                                                                   \
    static LOGEveryNth log4vrkEvery;                                                                     \
    LOG4VRK_STATEMENT_GUARDED(logger, rank, level, log4vrkEvery.admits(n), LOGNoParts() << __VA_ARGS__); \
  } while (false)
#define LOG4VRK_STATEMENT_EVERY(logger, rank, level, seconds, ...)                               \
  do {                                                                                           \
    static LOGEverySeconds log4vrkEvery;                                                         \
    LOGLeftOut log4vrkLeftOut;                                                                   \
    LOG4VRK_STATEMENT_GUARDED(logger, rank, level, log4vrkEvery.admits(seconds, log4vrkLeftOut), \
                              LOGNoParts() << __VA_ARGS__ << log4vrkLeftOut);                    \
  } while (false)
#define LOG4VRK_STATEMENT_ERRNO(logger, rank, level, ...)                                              \
  do {                                                                                                 \
    const LOGErrorText log4vrkError{errno};                                                            \
    LOG4VRK_STATEMENT_GUARDED(logger, rank, level, true, LOGNoParts() << __VA_ARGS__ << log4vrkError); \
  } while (false)
#define LOG4VRK_STATEMENT_GUARDED(logger, rank, level, admits, ...)       \
  do {                                                                    \
    if constexpr (rank >= LOG4VRK_LOWEST_RANK) {                          \
      LOGLogger* const log4vrkLogger = (logger);                          \
      if (log4vrkLogger->isEnabledFor(rank, level) && admits) {           \
        LOG4VRK_STATEMENT(LOGTarget{log4vrkLogger}, &level, __VA_ARGS__); \
      }                                                                   \
    }                                                                     \
  } while (false)
#define LOG4VRK_STATEMENT(target, levelPlace, ...)                                           \
  static constexpr LOGSourceLocation log4vrkPlace{__FILE__, __builtin_FUNCTION(), __LINE__}; \
  LOGStatementAt<log4vrkPlace, levelPlace>::log(target, __VA_ARGS__)
/// @endcond
