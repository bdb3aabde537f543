// The key of the table of loggers.

#pragma once

#include <cstdint>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGObject;

/// A logger's name with its hash code.
///
/// Thread safety: immutable.
class LOG4VRK_EXPORT LOGLoggerKey {
 public:
  explicit LOGLoggerKey(const I18NString& name) : m_name(name), m_hashCode(hashOf(name)) {}

  const I18NString& getName() const { return m_name; }
  std::uint32_t hashCode() const { return m_hashCode; }
  /// Whether the names are equal; false for null.
  bool equals(const LOGLoggerKey* other) const;
  /// Whether the object's text is the name; false for null.
  bool equals(const LOGObject* other) const;

  /// Begins with 0, and for each UTF-16 unit multiplies by 31 and adds the unit, modulo 2^32.
  static std::uint32_t hashOf(const I18NString& name);
  /// What the hash code of a text was before `last` was added to it.
  static constexpr std::uint32_t hashBefore(std::uint32_t hash, char16_t last) {
    constexpr std::uint32_t INVERSE_OF_31 = 0xBDEF7BDF;  // modulo 2^32
    static_assert(31 * INVERSE_OF_31 == 1);
    return (hash - last) * INVERSE_OF_31;
  }

 private:
  I18NString m_name;
  std::uint32_t m_hashCode;
};
