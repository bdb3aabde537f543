// Log calls whose text is put together only when it is wanted.

#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/I18NString.h"

/// Puts a text together with <<. Takes texts, characters, numbers, truth values, LOGObjects and whatever has an
/// operator<< for std::ostream. Narrow text is UTF-8.
///
/// Thread safety: not thread-safe; one for each message.
class LOGMessage {
 public:
  const I18NString& text() const { return m_text; }

  template <typename T>
  LOGMessage& operator<<(const T& value) {
    if constexpr (std::is_same_v<T, bool>) {
      m_text += value ? "true" : "false";
    } else if constexpr (std::is_same_v<T, char>) {
      m_text += I18NString(std::string_view(&value, 1));
    } else if constexpr (std::is_same_v<T, char16_t>) {
      m_text += value;
    } else if constexpr (std::is_integral_v<T>) {
      m_text += static_cast<std::conditional_t<std::is_signed_v<T>, long long, unsigned long long>>(value);
    } else if constexpr (std::is_convertible_v<const T&, const char*>) {
      m_text += static_cast<const char*>(value);
    } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
      m_text += I18NString(std::string_view(value));
    } else if constexpr (std::is_convertible_v<const T&, const I18NString&>) {
      m_text += static_cast<const I18NString&>(value);
    } else if constexpr (std::is_base_of_v<LOGObject, T>) {
      m_text += value.toString();
    } else {
      std::ostringstream stream;
      stream << value;
      m_text += stream.str().c_str();
    }
    return *this;
  }

 private:
  I18NString m_text;
};

/// Logs `expression`, a sequence such as `"order " << id << " accepted"`, through `logger`. It is evaluated only when
/// the level is enabled.
// NOLINTBEGIN(bugprone-macro-parentheses): in parentheses a sequence with << would mean something else
#define LOG4VRK_LOG(logger, level, expression)                              \
  do {                                                                      \
    LOGLogger* const log4vrkLogger = (logger);                              \
    if (log4vrkLogger->isEnabledFor(level)) {                               \
      LOGMessage log4vrkMessage;                                            \
      log4vrkMessage << expression;                                         \
      LOGObject log4vrkObject(log4vrkMessage.text());                       \
      log4vrkLogger->forcedLog(LOGLogger::m_FQCN, (level), &log4vrkObject); \
    }                                                                       \
  } while (false)
// NOLINTEND(bugprone-macro-parentheses)

#define LOG4VRK_DEBUG(logger, expression) LOG4VRK_LOG(logger, LOGLevel::DEBUG_OBJ, expression)
#define LOG4VRK_INFO(logger, expression) LOG4VRK_LOG(logger, LOGLevel::INFO_OBJ, expression)
#define LOG4VRK_WARN(logger, expression) LOG4VRK_LOG(logger, LOGLevel::WARN_OBJ, expression)
#define LOG4VRK_ERROR(logger, expression) LOG4VRK_LOG(logger, LOGLevel::ERROR_OBJ, expression)
#define LOG4VRK_FATAL(logger, expression) LOG4VRK_LOG(logger, LOGLevel::FATAL_OBJ, expression)
