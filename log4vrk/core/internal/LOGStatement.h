// How a log statement gets from the program's code into the library with as little code as can be where it stands.
//
// The macros make one expression of a statement. Its parts are only collected there (LOGParts): values by value,
// everything else by its address. Then one call passes them all on, in registers as far as there are any: enter(). That
// is marked as cold, so that compilers move the call and what leads to it out of the way of the code around it, and
// jumps on to write(), which puts the text together, and is as fast as they can make it. Statements with parts of the
// same types share both.

#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGMessage.h"
#include "log4vrk/core/LOGSourceLocation.h"
#include "log4vrk/core/internal/LOGText.h"
#include "log4vrk/platform/internal/I18NShortAscii.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

/// What the compiler knows of a statement.
struct LOGStatement {
  const LOGSourceLocation* place;
  LOGLevel* const* level;  // null when it is known at run time only
  std::uint64_t lengths;   // of the first eight parts that are arrays of characters, a byte for each, the first lowest
};

/// A part that is a constant array of characters, most often a literal. Its length is in LOGStatement; one of 0 is in
/// none.
struct LOGArrayPart {
  const char* text;
};
template <std::size_t>
struct LOGSizedArrayPart {
  const char* text;
};

/// A part that stays where it is.
template <typename T>
struct LOGReferredPart {
  const T* part;
};

/// How a T is collected.
template <typename T>
struct LOGCollected {
  static constexpr bool isValue = std::is_arithmetic_v<T> || std::is_enum_v<T> || std::is_pointer_v<T>;
  using type = std::conditional_t<isValue, std::remove_cv_t<T>, LOGReferredPart<T>>;
  [[gnu::always_inline]] static constexpr type of(const T& part) {
    if constexpr (isValue) {
      return part;
    } else {
      return {&part};
    }
  }
};
template <std::size_t size>
struct LOGCollected<char[size]> {
  using type = LOGSizedArrayPart<size - 1>;
  [[gnu::always_inline]] static constexpr type of(const char (&text)[size]) { return {text}; }
};
template <typename T, std::size_t size>
struct LOGCollected<T[size]> {
  using type = const T*;
  [[gnu::always_inline]] static constexpr type of(const T* first) { return first; }
};

/// The parts of a statement: those before the last one, and that one.
template <typename Before, typename Last>
struct LOGParts;

/// The << of a statement.
template <typename Self>
struct LOGPartsOperators {
  template <typename T>
  [[gnu::always_inline]] constexpr auto operator<<(const T& part) const {
    return with(LOGCollected<T>::of(part));
  }
  // Of a template such as std::endl the compiler has to be told which function is meant.
  [[gnu::always_inline]] constexpr auto operator<<(std::ostream& (*manipulator)(std::ostream&)) const {
    return with(manipulator);
  }

 private:
  template <typename Part>
  [[gnu::always_inline]] constexpr LOGParts<Self, Part> with(Part part) const {
    return {{}, static_cast<const Self&>(*this), part};
  }
};

struct LOGNoParts : LOGPartsOperators<LOGNoParts> {};

template <typename Before, typename Last>
struct LOGParts : LOGPartsOperators<LOGParts<Before, Last>> {
  Before before;
  Last last;
};

// Where a statement logs to: at the level that the compiler knows, or at another.
struct LOGTarget {
  LOGLevel* level(const LOGStatement& statement) const { return *statement.level; }
  LOGLogger* logger;
};
struct LOGTargetAtLevel {
  LOGLevel* level(const LOGStatement& /*statement*/) const { return at; }
  LOGLogger* logger;
  LOGLevel* at;
};

/// A constant array of characters, and its length at most.
struct LOGArray {
  const char* text;
  std::size_t length;
};

/// The parts that most texts are made of: how many bytes each takes at most, and how it is written, to the end that it
/// returns. All others take the way through LOGMessage, which knows every kind.
struct LOGPlainParts {
  static std::size_t most(std::string_view text) { return text.size(); }
  static std::size_t most(LOGArray array) { return array.length; }
  template <typename T>
  static std::size_t most(T /*number*/) {
    return I18NUtf8Buffer::MOST_DIGITS;
  }

  static char* put(char* at, std::string_view text) { return I18NUtf8Buffer::copy(at, text); }
  // An array that is no literal may end before its length.
  [[gnu::always_inline]] static char* put(char* at, LOGArray array) {
    if (array.length <= 16 && i18nCopyShortText(array.text, array.length, at)) return at + array.length;
    return I18NUtf8Buffer::copy(at, {array.text, ::strnlen(array.text, array.length)});
  }
  static char* put(char* at, char byte) {
    *at = byte;
    return at + 1;
  }
  static char* put(char* at, bool value) { return put(at, std::string_view(value ? "true" : "false")); }
  static char* put(char* at, long long value) { return I18NUtf8Buffer::putDecimal(at, value); }
  static char* put(char* at, unsigned long long value) { return I18NUtf8Buffer::putDecimal(at, value); }
  static char* put(char* at, double value) { return LOGMessage::putShortest(at, value); }

  // As what a part is written. Nothing for one that is not plain.
  static LOGArray plain(LOGArrayPart array, std::uint64_t& lengths) {
    const std::size_t length = lengths & 0xFF;
    lengths >>= 8;
    return {array.text, length != 0 ? length : ::strlen(array.text)};
  }
  template <typename T>
  static auto plain(LOGReferredPart<T> referred, std::uint64_t& /*lengths*/) {
    if constexpr (logIsText<T>) return onlyUtf8(logTextOf(*referred.part));
  }
  template <typename T>
  static auto plain(T value, std::uint64_t& /*lengths*/) {
    if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, char> || std::is_same_v<T, double>) {
      return value;
    } else if constexpr (std::is_integral_v<T> && !LOGMessage::isCharacter<T>) {
      return static_cast<std::conditional_t<std::is_signed_v<T>, long long, unsigned long long>>(value);
    } else if constexpr (logIsText<T>) {
      return onlyUtf8(logTextOf(value));
    }
  }

  template <typename Part>
  static constexpr bool isPlain =
      !std::is_void_v<decltype(plain(std::declval<Part>(), std::declval<std::uint64_t&>()))>;

 private:
  static std::string_view onlyUtf8(std::string_view text) { return text; }
  template <typename View>
  static void onlyUtf8(View /*text*/) {}
};

/// Puts a text together and logs it.
template <typename Target, typename... Parts>
struct LOGStatementWriter {
  [[gnu::cold, gnu::noinline]] static void enter(Target target, const LOGStatement* statement, Parts... parts) {
    write(target, statement, parts...);
  }

 private:
  [[gnu::noinline]] static void write(Target target, const LOGStatement* statement, Parts... parts) {
    if constexpr ((LOGPlainParts::isPlain<Parts> && ...)) {
      [[maybe_unused]] std::uint64_t lengths = statement->lengths;
      // In braces, which are evaluated from the first to the last.
      if (Plain{target, statement, LOGPlainParts::plain(parts, lengths)...}.isWritten) return;
    }
    writeAny(target, statement, parts...);
  }

  struct Plain {
    template <typename... Values>
    [[gnu::always_inline]] Plain(Target target, const LOGStatement* statement, Values... values) {
      char room[LOGMessage::ROOM];
      isWritten = (LOGPlainParts::most(values) + ... + 0) <= sizeof room;
      if (!isWritten) return;
      char* end = room;
      ((end = LOGPlainParts::put(end, values)), ...);
      const std::string_view text(room, static_cast<std::size_t>(end - room));
      target.logger->logStatement(target.level(*statement), text, statement->place);
    }
    bool isWritten;
  };

  [[gnu::noinline]] static void writeAny(Target target, const LOGStatement* statement, Parts... parts) {
    LOGMessage message;
    [[maybe_unused]] std::uint64_t lengths = statement->lengths;
    (add(message, lengths, parts), ...);
    target.logger->logStatement(target.level(*statement), message.bytes(), statement->place);
  }

  static void add(LOGMessage& message, std::uint64_t& lengths, LOGArrayPart part) {
    const LOGArray array = LOGPlainParts::plain(part, lengths);
    message << std::string_view(array.text, ::strnlen(array.text, array.length));
  }
  template <typename T>
  static void add(LOGMessage& message, std::uint64_t& /*lengths*/, LOGReferredPart<T> referred) {
    message << *referred.part;
  }
  template <typename T>
  static void add(LOGMessage& message, std::uint64_t& /*lengths*/, T value) {
    message << value;
  }
};

/// A statement at its place. log() takes the parts apart from the last to the first.
template <const LOGSourceLocation& place, LOGLevel* const* level = nullptr, std::uint64_t lengths = 0>
struct LOGStatementAt {
  template <typename Target, typename Before, typename Last, typename... Behind>
  [[gnu::always_inline]] static void log(Target target, const LOGParts<Before, Last>& parts, Behind... behind) {
    log(target, parts.before, parts.last, behind...);
  }
  template <typename Target, typename Before, std::size_t size, typename... Behind>
  [[gnu::always_inline]] static void log(Target target, const LOGParts<Before, LOGSizedArrayPart<size>>& parts,
                                         Behind... behind) {
    using WithLength = LOGStatementAt<place, level, (lengths << 8 | (size <= 0xFF ? size : 0))>;
    WithLength::log(target, parts.before, LOGArrayPart{parts.last.text}, behind...);
  }
  template <typename Target, typename... Parts>
  [[gnu::always_inline]] static void log(Target target, const LOGNoParts& /*before*/, Parts... parts) {
    LOGStatementWriter<Target, Parts...>::enter(target, &STATEMENT, parts...);
  }

 private:
  static constexpr LOGStatement STATEMENT{&place, level, lengths};
};
