// Names with typed values, as one row of bytes.

#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>

#include "log4vrk/core/LOGMessage.h"
#include "log4vrk/core/internal/LOGText.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

/// What a log statement has beside its text, and what a context is made of. A field is its type in one byte, the length
/// of its name in one, that of its value in four, the name and the value, one field behind the other. Names and texts
/// are UTF-8, numbers in the machine's own form. Of fields with the same name the last counts.
///
/// Thread safety: as I18NUtf8Buffer.
/// Failures: raises nothing. Without memory a field is left out.
class LOG4VRK_EXPORT LOGFields {
 public:
  enum Type : char { NO_VALUE, BOOLEAN, SIGNED, UNSIGNED, FLOATING, TEXT };

  struct LOG4VRK_EXPORT Field {
    std::string_view name, value;
    Type type = NO_VALUE;

    std::int64_t integer() const;  // of SIGNED, UNSIGNED and BOOLEAN
    double floating() const;
    /// As a log statement writes the value; "null" for none.
    void appendValue(I18NUtf8Buffer& out) const;
  };

  /// Walks through such bytes. Those of a damaged file end it early, and do no harm.
  class LOG4VRK_EXPORT Reader {
   public:
    explicit Reader(std::string_view bytes) : m_left(bytes) {}
    bool next(Field& field);

   private:
    std::string_view m_left;
  };

  /// In bytes; longer names are cut.
  static constexpr std::size_t LONGEST_NAME = 255;
  /// Of these bytes need no memory but the object's own.
  static constexpr std::size_t ROOM = 256;

  LOGFields() noexcept : m_bytes(m_room, sizeof m_room) {}
  LOGFields(const LOGFields&) = delete;
  LOGFields& operator=(const LOGFields&) = delete;

  std::string_view bytes() const { return m_bytes.view(); }

  /// Names and values in turn. A value is a truth value, a number, a text, or whatever LOGMessage takes, which becomes
  /// text; a null pointer is none.
  template <typename Name, typename Value, typename... Others>
  void add(const Name& name, const Value& value, const Others&... others) {
    addValue(logTextOf(name), value);
    add(others...);
  }
  void add() {}
  /// Those of bytes that may be anything.
  void addAll(std::string_view bytes);

 private:
  template <typename Value>
  void addValue(std::string_view name, const Value& value) {
    if constexpr (std::is_same_v<Value, bool>) {
      addInteger(name, BOOLEAN, value ? 1 : 0);
    } else if constexpr (std::is_integral_v<Value> && !LOGMessage::isCharacter<Value>) {
      addInteger(name, std::is_signed_v<Value> ? SIGNED : UNSIGNED, static_cast<std::int64_t>(value));
    } else if constexpr (std::is_floating_point_v<Value>) {
      addFloating(name, value);
    } else if constexpr (std::is_null_pointer_v<Value>) {
      put(name, NO_VALUE, {});
    } else if constexpr (std::is_convertible_v<const Value&, const char*>) {
      const char* const text = value;
      put(name, text != nullptr ? TEXT : NO_VALUE, logTextOf(text));
    } else if constexpr (std::is_convertible_v<const Value&, std::string_view>) {
      put(name, TEXT, std::string_view(value));
    } else {
      LOGMessage text;
      text << value;
      put(name, TEXT, text.bytes());
    }
  }
  void addInteger(std::string_view name, Type type, std::int64_t value);
  void addFloating(std::string_view name, float value);
  void addFloating(std::string_view name, double value);
  void addFloating(std::string_view name, long double value) { addFloating(name, static_cast<double>(value)); }
  void put(std::string_view name, Type type, std::string_view value);

  char m_room[ROOM];
  I18NUtf8Buffer m_bytes;
};
