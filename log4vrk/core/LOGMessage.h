// Log calls whose text is put together only when it is wanted.

#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

/// Puts a text together with <<. Takes texts, characters, numbers, truth values, LOGObjects and whatever has an
/// operator<< for std::ostream, when <ostream> is included. Narrow text is UTF-8. Most messages need no memory but the
/// object's own.
///
/// Thread safety: not thread-safe; one for each message.
class LOG4VRK_EXPORT LOGMessage {
 public:
  LOGMessage() noexcept : m_text(m_room, sizeof m_room) {}
  LOGMessage(const LOGMessage&) = delete;
  LOGMessage& operator=(const LOGMessage&) = delete;

  I18NString text() const { return I18NString(utf8()); }
  std::string_view utf8() const { return m_text.view(); }

  template <typename T>
  [[gnu::always_inline]] LOGMessage& operator<<(const T& part) {
    if constexpr (std::is_same_v<T, bool>) {
      m_text.append(std::string_view(part ? "true" : "false"));
    } else if constexpr (std::is_same_v<T, char>) {
      m_text.append(std::string_view(&part, 1));
    } else if constexpr (std::is_same_v<T, char16_t>) {
      m_text.append(std::u16string_view(&part, 1));
    } else if constexpr (std::is_integral_v<T>) {
      m_text.append(static_cast<std::conditional_t<std::is_signed_v<T>, long long, unsigned long long>>(part));
    } else if constexpr (std::is_array_v<T> && std::is_convertible_v<const T&, const char*> && sizeof(T) <= 17) {
      m_text.appendShort(std::string_view(part));
    } else if constexpr (std::is_convertible_v<const T&, const char*>) {
      const char* const text = part;
      if (text != nullptr) m_text.append(std::string_view(text));
    } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
      m_text.append(std::string_view(part));
    } else if constexpr (std::is_convertible_v<const T&, const I18NString&>) {
      m_text.append(static_cast<const I18NString&>(part));
    } else if constexpr (std::is_base_of_v<LOGObject, T>) {
      m_text.append(part.toString());
    } else if constexpr (std::is_floating_point_v<T>) {
      appendNumber(part);
    } else {
      Stream stream;
      stream.get() << part;
      stream.appendTo(m_text);
    }
    return *this;
  }

 private:
  /// A std::ostringstream behind bare memory: <sstream> would cost every file that logs, and few put a number with a
  /// point or an object of their own into a message.
  class LOG4VRK_EXPORT Stream {
   public:
    Stream();
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    std::ostream& get();
    void appendTo(I18NUtf8Buffer& text);

   private:
    alignas(8) unsigned char m_memory[400];
  };
  void appendNumber(double number);
  void appendNumber(long double number);
  void appendNumber(float number) { appendNumber(static_cast<double>(number)); }

  char m_room[512];
  I18NUtf8Buffer m_text;
};

/// Logs `expression`, a sequence such as `"order " << id << " accepted"`, through `logger`. It is evaluated only when
/// the level is enabled.
// NOLINTBEGIN(bugprone-macro-parentheses): in parentheses a sequence with << would mean something else
#define LOG4VRK_LOG(logger, level, expression) LOG4VRK_LOG_IF_ENABLED(logger, (level), (level), expression)
#define LOG4VRK_LOG_IF_ENABLED(logger, asked, level, expression)  \
  do {                                                            \
    LOGLogger* const log4vrkLogger = (logger);                    \
    if (__builtin_expect(log4vrkLogger->isEnabledFor asked, 0)) { \
      LOGMessage log4vrkMessage;                                  \
      log4vrkMessage << expression;                               \
      log4vrkLogger->forcedLog(level, log4vrkMessage);            \
    }                                                             \
  } while (false)
#define LOG4VRK_LOG_AT(logger, name, expression) \
  LOG4VRK_LOG_IF_ENABLED(logger, (LOGLevel::name##_RANK, LOGLevel::name##_OBJ), LOGLevel::name##_OBJ, expression)
// NOLINTEND(bugprone-macro-parentheses)

#define LOG4VRK_DEBUG(logger, expression) LOG4VRK_LOG_AT(logger, DEBUG, expression)
#define LOG4VRK_INFO(logger, expression) LOG4VRK_LOG_AT(logger, INFO, expression)
#define LOG4VRK_WARN(logger, expression) LOG4VRK_LOG_AT(logger, WARN, expression)
#define LOG4VRK_ERROR(logger, expression) LOG4VRK_LOG_AT(logger, ERROR, expression)
#define LOG4VRK_FATAL(logger, expression) LOG4VRK_LOG_AT(logger, FATAL, expression)
