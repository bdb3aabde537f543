// The text of a log call, put together with <<.

#pragma once

#include <iosfwd>
#include <string_view>
#include <type_traits>

#include "log4vrk/core/LOGObject.h"
#include "log4vrk/core/internal/LOGText.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

/// One stream: what a manipulator sets holds until it is set again. Takes
///  - texts: narrow ones, which are UTF-8, wide ones and UTF-16, and LOGObjects. A null pointer is the empty text;
///  - characters of any width, but signed char and unsigned char, which are numbers;
///  - truth values, as "true" and "false" unless std::noboolalpha is set;
///  - numbers, never in the form of some locale. One with a point is as short as it can be to read back the same,
///    unless a precision, std::fixed, std::scientific or std::showpoint is set;
///  - manipulators, and whatever else has an operator<< for std::ostream, when <ostream> is included.
/// Most messages need no memory but the object's own.
///
/// Thread safety: not thread-safe; one for each message.
/// Failures: raises nothing. What an operator<< raises, or lack of memory, is noted in the text in place of the part.
class LOG4VRK_EXPORT LOGMessage {
 public:
  LOGMessage() noexcept : m_text(m_room, sizeof m_room) {}
  ~LOGMessage() {
    if (m_stream != nullptr) endStream();
  }
  LOGMessage(const LOGMessage&) = delete;
  LOGMessage& operator=(const LOGMessage&) = delete;

  I18NString text() const { return I18NString(utf8()); }
  /// Well-formed. Valid until something is added.
  std::string_view utf8() const;

  template <typename T>
  LOGMessage& operator<<(const T& part) {
    if constexpr (std::is_same_v<T, bool>) {
      addBool(part);
    } else if constexpr (isCharacter<T>) {
      addCharacter(static_cast<std::make_unsigned_t<T>>(part), sizeof part);
    } else if constexpr (std::is_integral_v<T>) {
      using Widest = std::conditional_t<std::is_signed_v<T>, long long, unsigned long long>;
      addInteger(static_cast<Widest>(part), sizeof part);
    } else if constexpr (std::is_floating_point_v<T>) {
      addFloating(part);
    } else if constexpr (logIsText<T>) {
      addText(logTextOf(part));
    } else if constexpr (std::is_convertible_v<const T&, const I18NString&>) {
      addText(static_cast<const I18NString&>(part).view());
    } else if constexpr (std::is_base_of_v<LOGObject, T>) {
      addObject(part);
    } else {
      addStreamed([](std::ostream& out, const void* any) { out << *static_cast<const T*>(any); }, &part);
    }
    return *this;
  }
  LOGMessage& operator<<(std::ostream& (*manipulator)(std::ostream&));
  LOGMessage& operator<<(std::ios_base& (*manipulator)(std::ios_base&));
  LOGMessage& operator<<(std::basic_ios<char>& (*manipulator)(std::basic_ios<char>&));

  // For log statements, which write most texts themselves.
  /// As they were added, and perhaps not well-formed.
  std::string_view bytes() const { return m_text.view(); }
  /// As << writes it. Takes up to I18NUtf8Buffer::MOST_DIGITS bytes, and returns the end.
  static char* putShortest(char* at, double value);
  static constexpr std::size_t ROOM = 512;
  template <typename T>
  static constexpr bool isCharacter = std::is_same_v<T, char> || std::is_same_v<T, wchar_t> ||
#ifdef __cpp_char8_t
                                      std::is_same_v<T, char8_t> ||
#endif
                                      std::is_same_v<T, char16_t> || std::is_same_v<T, char32_t>;

 private:
  struct Stream;

  void addBool(bool value);
  void addCharacter(char32_t character, std::size_t size);
  void addInteger(long long value, std::size_t size);
  void addInteger(unsigned long long value, std::size_t size);
  void addFloating(float value);
  void addFloating(double value);
  void addFloating(long double value);
  void addText(std::string_view utf8);
  void addText(std::u16string_view utf16);
  void addText(std::wstring_view wide);
  void addObject(const LOGObject& object);
  void addStreamed(void (*print)(std::ostream&, const void*), const void* part);

  template <typename Operation>
  void guard(Operation operation);
  template <typename Operation>
  void addFormatted(Operation operation);
  template <typename Number>
  void addShortest(Number value);
  LOG4VRK_HIDDEN void addFailure(const char* what);
  void endStream();

  char m_room[ROOM];
  mutable I18NUtf8Buffer m_text;
  Stream* m_stream = nullptr;  // made for the first part that needs one
};
