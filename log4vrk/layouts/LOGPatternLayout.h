// Lines that look as a pattern says.

#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/core/LOGLoggingEvent.h"

struct LOGPatternConverter;
class LOGPatternCopy;
struct LOGThreadState;

/// The text of a pattern, with items for the parts of the event:
///
///   %r  milliseconds since the library was loaded    %m  message
///   %d  date: %d{format}, %d{format}{time zone}      %n  line feed
///   %t  thread                                       %%  percent sign
///   %p  level                                        %C  class, %F file, %L line, %M method of the log call,
///   %c  logger; %c{2}: its last two components       %l  class.method(file:line)
///   %x  nested context                               %X  context and fields as name=value; %X{name}: one value
///   %e  message, escaped: see setSafeText()
///
/// A date format is what LOGDateFormat takes, ISO8601 unless it is given; the zone is one of LOGTimeZone. Between the
/// percent sign and the letter may stand a minimum width, after a minus sign to fill up on the right instead of the
/// left, and after a dot a maximum width, beyond which the beginning is cut off: "%-5p", "%20.30c". A minimum of more
/// than 1000 is 1000. Widths count UTF-16 units, and a cut never splits a character.
///
/// Thread safety: as LOGLayout; the pattern may be changed while other threads log.
/// Errors: a pattern never fails. An item that is not understood is written as it stands, and reported once when the
/// pattern is set. See format() for the rest.
class LOG4VRK_EXPORT LOGPatternLayout : public LOGLayout {
 public:
  /// "%r [%t] %p %c %x - %m%n"
  LOGPatternLayout();
  explicit LOGPatternLayout(const I18NString& pattern);
  LOGPatternLayout(const LOGPatternLayout&) = delete;
  ~LOGPatternLayout() override;

  void setConversionPattern(const I18NString& pattern);
  I18NString getConversionPattern();
  /// Has all items write control characters, line separators, marks that change the direction of writing and the
  /// backslash as escapes (\n, \x1b, \u2028, \\), so that each event is as many lines as the pattern has %n, whatever
  /// is logged. Off at first.
  void setSafeText(bool on);
  bool getSafeText();

  /// A null event is reported and gives the empty text. The library's own errors, and a message that cannot be
  /// rendered, cost the item that they befall and one line in the internal log; any other error is written there too
  /// and raised.
  I18NString& format(LOGLoggingEvent* event) override;
  int ignoresThrowable() override;

 private:
  LOG4VRK_HIDDEN static const LOGLayoutInternals INTERNALS;

  static std::string_view formatFast(LOGLayout& layout, LOGLoggingEvent& event);
  LOG4VRK_HIDDEN std::string_view buildAny(LOGLoggingEvent* event);
  LOG4VRK_HIDDEN static std::string_view build(LOGThreadState& thread, LOGPatternCopy& copy, LOGLoggingEvent& event,
                                               std::string_view message);
  LOGPatternCopy& copyOf(LOGThreadState& thread);
  LOG4VRK_HIDDEN LOGPatternCopy& takeCopy(LOGThreadState& thread);

  // Every pattern that is set, in whichever layout, has a number of its own. A thread compares it with that of the copy
  // it has, and so sees without a lock that the pattern has changed.
  std::atomic<std::uint64_t> m_number{0};
  I18NString m_pattern VRK_GUARDED_BY(m_critSection);
  bool m_isSafe VRK_GUARDED_BY(m_critSection) = false;
  std::vector<LOGPatternConverter> m_converters VRK_GUARDED_BY(m_critSection);
};
