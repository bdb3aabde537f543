// Log statements with fields: names with values that keep their type.
//
//   LOG4VRK_INFO_KV(logger, "accepted", "order", id, "total", 17.5);
//
// The text is what the other macros take between their <<, in parentheses where it has a comma. Names and values come
// in turn; LOGFields.h says what a value may be. All of it is evaluated only when the level is enabled.
//
// Thread safety: any thread.

#pragma once

#include "log4vrk/core/LOGContext.h"
#include "log4vrk/core/LOGMacros.h"
#include "log4vrk/core/internal/LOGFields.h"

/// Logs `text`, which is what the other macros take between their <<, with fields: names and values in turn.
/// @{
#define LOG4VRK_DEBUG_KV(logger, text, ...) \
  LOG4VRK_STATEMENT_KV(logger, LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ, text, __VA_ARGS__)
#define LOG4VRK_INFO_KV(logger, text, ...) \
  LOG4VRK_STATEMENT_KV(logger, LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ, text, __VA_ARGS__)
#define LOG4VRK_WARN_KV(logger, text, ...) \
  LOG4VRK_STATEMENT_KV(logger, LOGLevel::WARN_RANK, LOGLevel::WARN_OBJ, text, __VA_ARGS__)
#define LOG4VRK_ERROR_KV(logger, text, ...) \
  LOG4VRK_STATEMENT_KV(logger, LOGLevel::ERROR_RANK, LOGLevel::ERROR_OBJ, text, __VA_ARGS__)
#define LOG4VRK_FATAL_KV(logger, text, ...) \
  LOG4VRK_STATEMENT_KV(logger, LOGLevel::FATAL_RANK, LOGLevel::FATAL_OBJ, text, __VA_ARGS__)
/// @}

/// @cond
#define LOG4VRK_STATEMENT_KV(logger, rank, level, text, ...)                                            \
  do {                                                                                                  \
    if constexpr (rank >= LOG4VRK_LOWEST_RANK) {                                                        \
      LOGLogger* const log4vrkLogger = (logger);                                                        \
      if (log4vrkLogger->isEnabledFor(rank, level)) {                                                   \
        static constexpr LOGSourceLocation log4vrkPlace{__FILE__, __builtin_FUNCTION(), __LINE__};      \
        LOGFieldStatement::log(log4vrkLogger, level, &log4vrkPlace, LOGNoParts() << text, __VA_ARGS__); \
      }                                                                                                 \
    }                                                                                                   \
  } while (false)

/// As with the other statements, values go by value and everything else by its address into a function that is out of
/// the way of the code around the statement.
struct LOGFieldStatement {
  template <typename Parts, typename... Arguments>
  [[gnu::always_inline]] static void log(LOGLogger* logger, LOGLevel* level, const LOGSourceLocation* place,
                                         const Parts& parts, const Arguments&... arguments) {
    static_assert(sizeof...(Arguments) % 2 == 0, "a field is a name and a value");
    write(logger, level, place, parts, LOGCollected<Arguments>::of(arguments)...);
  }

 private:
  template <typename Parts, typename... Collected>
  [[gnu::cold, gnu::noinline]] static void write(LOGLogger* logger, LOGLevel* level, const LOGSourceLocation* place,
                                                 Parts parts, Collected... collected) {
    LOGMessage text;
    put(text, parts);
    LOGFields fields;
    fields.add(argument(collected)...);
    logger->logStatement(level, text.bytes(), place, fields.bytes());
  }

  static void put(LOGMessage& /*text*/, const LOGNoParts& /*none*/) {}
  template <typename Before, typename Last>
  static void put(LOGMessage& text, const LOGParts<Before, Last>& parts) {
    put(text, parts.before);
    text << argument(parts.last);
  }

  template <std::size_t size>
  static std::string_view argument(LOGSizedArrayPart<size> array) {
    return {array.text, ::strnlen(array.text, size)};
  }
  template <typename T>
  static const T& argument(LOGReferredPart<T> referred) {
    return *referred.part;
  }
  template <typename T>
  static T argument(T value) {
    return value;
  }
};
/// @endcond
