// Log statements with a format string: LOG4VRK_INFO_F(logger, "order {} in {:.3f} s", id, seconds). A file that
// includes this needs the fmt library (libfmt-dev; target fmt::fmt, or fmt::fmt-header-only).
//
// String and arguments are held against each other when the statement is compiled. As with LOGMacros.h, arguments are
// evaluated only when the level is enabled, and file, line and function go along with the event. The text is formatted
// where the event will read it.
//
// Thread safety: any thread.
// Failures: what a formatter raises is noted in the text, in place of the rest.

#pragma once

#include <fmt/format.h>

#include "log4vrk/core/LOGMacros.h"
#include "log4vrk/platform/VRKThrowable.h"

#define LOG4VRK_DEBUG_F(logger, ...) LOG4VRK_FORMATTED(logger, LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ, __VA_ARGS__)
#define LOG4VRK_INFO_F(logger, ...) LOG4VRK_FORMATTED(logger, LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ, __VA_ARGS__)
#define LOG4VRK_WARN_F(logger, ...) LOG4VRK_FORMATTED(logger, LOGLevel::WARN_RANK, LOGLevel::WARN_OBJ, __VA_ARGS__)
#define LOG4VRK_ERROR_F(logger, ...) LOG4VRK_FORMATTED(logger, LOGLevel::ERROR_RANK, LOGLevel::ERROR_OBJ, __VA_ARGS__)
#define LOG4VRK_FATAL_F(logger, ...) LOG4VRK_FORMATTED(logger, LOGLevel::FATAL_RANK, LOGLevel::FATAL_OBJ, __VA_ARGS__)
/// At a level that is known at run time only.
#define LOG4VRK_LOG_F(logger, level, ...)                                                              \
  do {                                                                                                 \
    LOGLogger* const log4vrkLogger = (logger);                                                         \
    LOGLevel* const log4vrkLevel = (level);                                                            \
    if (log4vrkLogger->isEnabledFor(log4vrkLevel)) {                                                   \
      LOG4VRK_FORMAT_STATEMENT((LOGTargetAtLevel{log4vrkLogger, log4vrkLevel}), nullptr, __VA_ARGS__); \
    }                                                                                                  \
  } while (false)

#define LOG4VRK_FORMATTED(logger, rank, level, ...)                              \
  do {                                                                           \
    if constexpr (rank >= LOG4VRK_LOWEST_RANK) {                                 \
      LOGLogger* const log4vrkLogger = (logger);                                 \
      if (log4vrkLogger->isEnabledFor(rank, level)) {                            \
        LOG4VRK_FORMAT_STATEMENT(LOGTarget{log4vrkLogger}, &level, __VA_ARGS__); \
      }                                                                          \
    }                                                                            \
  } while (false)
#define LOG4VRK_FORMAT_STATEMENT(target, levelPlace, ...)                                                          \
  static constexpr LOGSourceLocation log4vrkPlace{__FILE__, __builtin_FUNCTION(), __LINE__};                       \
  static constexpr LOGFormatStatement log4vrkFormat{{&log4vrkPlace, levelPlace, 0}, LOG4VRK_FIRST(__VA_ARGS__, )}; \
  LOGFormat::log(target, &log4vrkFormat, FMT_STRING(LOG4VRK_FIRST(__VA_ARGS__, )), __VA_ARGS__)
#define LOG4VRK_FIRST(first, ...) first

struct LOGFormatStatement : LOGStatement {
  constexpr LOGFormatStatement(const LOGStatement& statement, std::string_view format_)
      : LOGStatement(statement), format(format_) {}
  std::string_view format;
};

/// As with the other statements, little code where they stand, and what statements with arguments of the same types
/// share. See LOGStatement.h.
struct LOGFormat {
  template <typename Target, typename Checked, typename... Arguments>
  [[gnu::always_inline]] static void log(Target target, const LOGFormatStatement* statement, Checked /*format*/,
                                         std::string_view /*format*/, const Arguments&... arguments) {
    [[maybe_unused]] const fmt::format_string<const Arguments&...> check{Checked()};
    enter(target, statement, LOGCollected<Arguments>::of(arguments)...);
  }

 private:
  template <typename Target, typename... Parts>
  [[gnu::cold, gnu::noinline]] static void enter(Target target, const LOGFormatStatement* statement, Parts... parts) {
    write(target, statement, parts...);
  }
  template <typename Target, typename... Parts>
  [[gnu::noinline]] static void write(Target target, const LOGFormatStatement* statement, Parts... parts) {
    fmt::basic_memory_buffer<char, LOGMessage::ROOM> text;
    format(text, statement->format, fmt::make_format_args(argument(parts)...));
    target.logger->logStatement(target.level(*statement), {text.data(), text.size()}, statement->place);
  }
  template <typename Buffer>
  static void format(Buffer& text, std::string_view format, fmt::format_args arguments) {
    const auto fail = [&text](std::string_view what) {
      for (const std::string_view part : {std::string_view("<not printed: "), what, std::string_view(">")}) {
        if (text.capacity() - text.size() >= part.size()) text.append(part.data(), part.data() + part.size());
      }
    };
    try {
      fmt::vformat_to(fmt::appender(text), fmt::string_view(format.data(), format.size()), arguments);
    } catch (const std::exception& error) {
      fail(error.what());
    }
    VRK_RETHROW_FORCED_UNWIND
    catch (...) {
      fail("unknown exception");
    }
  }

  template <std::size_t size>
  static const char* argument(LOGSizedArrayPart<size> array) {
    return array.text;
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
