// Log statements with a format string: LOG4VRK_INFO_F(logger, "order {} in {:.3f} s", id, seconds). A file that
// includes this needs the fmt library (libfmt-dev; target fmt::fmt, or fmt::fmt-header-only).
//
// String and arguments are held against each other when the statement is compiled. As with LOGMacros.h, arguments are
// evaluated only when the level is enabled, and file, line and function go along with the event.
//
// Behind a queue the text is formatted by the queue's thread, when all arguments are numbers, characters, truth values,
// texts or pointers to void, and short. Any other argument is formatted by the thread that logs. See docs/logging.md.
//
// Thread safety: any thread.
// Failures: what a formatter raises is noted in the text, in place of the rest.

#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "log4vrk/core/LOGMacros.h"
#include "log4vrk/core/internal/LOGPackedText.h"
#include "log4vrk/platform/VRKThrowable.h"

/// Logs a text by a format string and its arguments.
/// @{
#define LOG4VRK_DEBUG_F(logger, ...) LOG4VRK_FORMATTED(logger, LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ, __VA_ARGS__)
#define LOG4VRK_INFO_F(logger, ...) LOG4VRK_FORMATTED(logger, LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ, __VA_ARGS__)
#define LOG4VRK_WARN_F(logger, ...) LOG4VRK_FORMATTED(logger, LOGLevel::WARN_RANK, LOGLevel::WARN_OBJ, __VA_ARGS__)
#define LOG4VRK_ERROR_F(logger, ...) LOG4VRK_FORMATTED(logger, LOGLevel::ERROR_RANK, LOGLevel::ERROR_OBJ, __VA_ARGS__)
#define LOG4VRK_FATAL_F(logger, ...) LOG4VRK_FORMATTED(logger, LOGLevel::FATAL_RANK, LOGLevel::FATAL_OBJ, __VA_ARGS__)
/// @}
/// As LOG4VRK_INFO_F, at a level that is known at run time only.
#define LOG4VRK_LOG_F(logger, level, ...)                                                              \
  do {                                                                                                 \
    LOGLogger* const log4vrkLogger = (logger);                                                         \
    LOGLevel* const log4vrkLevel = (level);                                                            \
    if (log4vrkLogger->isEnabledFor(log4vrkLevel)) {                                                   \
      LOG4VRK_FORMAT_STATEMENT((LOGTargetAtLevel{log4vrkLogger, log4vrkLevel}), nullptr, __VA_ARGS__); \
    }                                                                                                  \
  } while (false)

/// @cond
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
      : LOGStatement(statement), format(format_), canWait(!asksTheProgram(format_)) {}
  std::string_view format;
  bool canWait;  // as far as the format string is concerned

 private:
  // For its locale (L), or for where a text is (p).
  static constexpr bool asksTheProgram(std::string_view format) {
    int depth = 0;
    for (const char each : format) {
      if (each == '{') ++depth;
      if (each == '}' && depth > 0) --depth;
      if (depth > 0 && (each == 'L' || each == 'p')) return true;
    }
    return false;
  }
};

/// Arguments that can wait for another thread: formatting them runs no code of the program's, and gives the same at any
/// time. They wait as bytes: values as they are, texts with their length in front.
struct LOGWaitingParts {
  // What a part is kept as. Nothing for one that cannot wait.
  template <typename T>
  static auto value(T part) {
    if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, const void*> || std::is_same_v<T, void*>) {
      return part;
    } else if constexpr (std::is_same_v<T, const char*> || std::is_same_v<T, char*>) {
      return part != nullptr ? std::string_view(part) : std::string_view();
    }
  }
  template <typename T>
  static auto value(LOGReferredPart<T> referred) {
    if constexpr (std::is_same_v<T, std::string> || std::is_same_v<T, std::string_view>) {
      return std::string_view(*referred.part);
    }
  }
  template <std::size_t size>
  static auto value(LOGSizedArrayPart<size> array) {
    return std::string_view(array.text);
  }
  template <typename Part>
  static constexpr bool canWait = !std::is_void_v<decltype(value(std::declval<Part>()))>;

  static constexpr std::size_t MOST = 128;  // bytes; what is longer does not wait
  // A null pointer does not wait either: it is an error, which is the formatter's to find.
  static std::size_t size(std::string_view text) {
    return text.data() != nullptr && text.size() <= MOST ? sizeof(std::uint32_t) + text.size() : MOST + 1;
  }
  template <typename T>
  static std::size_t size(T /*value*/) {
    return sizeof(T);
  }
  static char* put(char* at, std::string_view text) {
    return I18NUtf8Buffer::copy(put(at, static_cast<std::uint32_t>(text.size())), text);
  }
  template <typename T>
  static char* put(char* at, T value) {
    std::memcpy(at, &value, sizeof value);
    return at + sizeof value;
  }
  template <typename T>
  static T take(const char*& at) {
    if constexpr (std::is_same_v<T, std::string_view>) {
      const auto length = take<std::uint32_t>(at);
      return {std::exchange(at, at + length), length};
    } else {
      T value;
      std::memcpy(&value, at, sizeof value);
      at += sizeof value;
      return value;
    }
  }
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
  using Text = fmt::basic_memory_buffer<char, LOGMessage::ROOM>;

  template <typename Target, typename... Parts>
  [[gnu::cold, gnu::noinline]] static void enter(Target target, const LOGFormatStatement* statement, Parts... parts) {
    write(target, statement, parts...);
  }
  template <typename Target, typename... Parts>
  [[gnu::noinline]] static void write(Target target, const LOGFormatStatement* statement, Parts... parts) {
    if constexpr ((LOGWaitingParts::canWait<Parts> && ...)) {
      if (statement->canWait && writePacked(target, statement, LOGWaitingParts::value(parts)...)) return;
    }
    writeNow(target, statement, parts...);
  }
  template <typename Target, typename... Values>
  [[gnu::always_inline]] static bool writePacked(Target target, const LOGFormatStatement* statement, Values... values) {
    char packed[LOGWaitingParts::MOST];
    const std::size_t size = (LOGWaitingParts::size(values) + ... + std::size_t{0});
    if (size > LOGWaitingParts::MOST) return false;
    char* end = packed;
    ((end = LOGWaitingParts::put(end, values)), ...);
    const LOGPackedText text{&print<Values...>, statement, {packed, static_cast<std::size_t>(end - packed)}};
    target.logger->logStatement(target.level(*statement), text, statement->place);
    return true;
  }
  template <typename... Values>
  static void print(const void* statement, std::string_view packed, I18NUtf8Buffer& out) {
    [[maybe_unused]] const char* at = packed.data();
    const std::tuple<Values...> values{LOGWaitingParts::take<Values>(at)...};  // in braces: one after the other
    std::apply(
        [&](const Values&... each) {
          Text text;
          format(text, static_cast<const LOGFormatStatement*>(statement)->format, fmt::make_format_args(each...));
          out.appendChecked({text.data(), text.size()});
        },
        values);
  }
  template <typename Target, typename... Parts>
  [[gnu::noinline]] static void writeNow(Target target, const LOGFormatStatement* statement, Parts... parts) {
    Text text;
    format(text, statement->format, fmt::make_format_args(argument(parts)...));
    target.logger->logStatement(target.level(*statement), {text.data(), text.size()}, statement->place);
  }
  static void format(Text& text, std::string_view format, fmt::format_args arguments) {
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
/// @endcond
