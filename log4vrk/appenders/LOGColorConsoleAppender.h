// The appender that writes to the console in colours, or with the severities that a service manager reads.

#pragma once

#include <array>
#include <string>
#include <string_view>

#include "log4vrk/appenders/LOGConsoleAppender.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

class LOGLevel;

/// A console appender whose lines have the colour of their level where somebody sees it. A line, its colour and its
/// prefix go to the system as one write, so they stay together when other processes write to the same terminal.
///
/// Thread safety: any thread.
/// Errors: as LOGConsoleAppender. A value that is not understood draws a warning and changes nothing.
class LOG4VRK_EXPORT LOGColorConsoleAppender : public LOGConsoleAppender {
 public:
  LOGColorConsoleAppender();
  explicit LOGColorConsoleAppender(LOGLayout* layout);

  /// "auto", "always" or "never" in any case. "auto", the default, has colours when the stream is a terminal, TERM is
  /// set and is not "dumb", and NO_COLOR is unset or empty. It is looked at when the stream is taken, and here.
  void setColors(const I18NString& when);
  I18NString getColors() const;
  /// The colour of the level, which is one of the five that programs log at, and of the program's own levels above it
  /// as far as the next. Levels below DEBUG look like DEBUG. `color` is "none", or words with blanks between them:
  /// black, red, green, yellow, blue, magenta, cyan or white, also with "bright-" in front; bold, dim, italic,
  /// underline, reverse; or the numbers of a terminal's SGR sequence, such as "38;5;208".
  void setColor(const LOGLevel& level, const I18NString& color);
  I18NString getColor(const LOGLevel& level) const;
  static bool isColor(const I18NString& color);
  /// "none", the default, or "sd-daemon" in any case: each line begins with its severity, such as <3>, which a journal
  /// takes off again. So does each further line of an event of several.
  void setPrefix(const I18NString& prefix);
  I18NString getPrefix() const;

  void subappend(LOGLoggingEvent* event) override VRK_REQUIRES(m_critSection);
  /// Also looks whether the stream wants colours.
  void setQWForFiles() override VRK_REQUIRES(m_critSection);

 private:
  LOG4VRK_HIDDEN static const LOGAppenderInternals INTERNALS;
  static constexpr std::size_t LEVELS = 5;
  struct Look {
    I18NString color;
    std::string start;  // what switches it on; empty: nothing
  };

  LOG4VRK_HIDDEN static std::size_t indexOf(const LOGLevel& level);
  LOG4VRK_HIDDEN void decideColors() VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void writeLine(const LOGLevel* level, std::string_view line) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void decorate(const LOGLevel& level, std::string_view start, std::string_view line)
      VRK_REQUIRES(m_critSection);

  I18NString m_colors VRK_GUARDED_BY(m_critSection);
  bool m_hasPrefix VRK_GUARDED_BY(m_critSection) = false;
  bool m_isColored VRK_GUARDED_BY(m_critSection) = false;
  std::array<Look, LEVELS> m_looks VRK_GUARDED_BY(m_critSection);
  I18NUtf8Buffer m_line VRK_GUARDED_BY(m_critSection);
};
