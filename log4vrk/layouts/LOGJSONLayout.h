// Events as JSON, one object a line.

#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "log4vrk/core/LOGLayout.h"

class LOGJSONCopy;
struct LOGJSONForm;
struct LOGJSONSettings;
struct LOGThreadState;

/// One object and a line feed for each event, in UTF-8, in whatever locale: time, level, logger, thread, process,
/// message, nested context (LOGNDC), context (LOGContext), the event's own fields, the place of the log statement, and
/// the text of a throwable. What an event does not have is left out, but for the message. Numbers and truth values stay
/// what they are; what JSON has no number for (NaN, infinity) is null. An unpaired surrogate becomes U+FFFD. Characters
/// that could be taken for more than text are escaped: see LOGEscape.
///
/// No object has a name twice. A field with one of the layout's own names gets an underscore in front: "_message".
///
/// A preset is a set of names, in the order in which a kind of log store expects them:
///   plain  time, level, logger, thread, pid, message, ...   this library's own
///   ecs    @timestamp, log.level, message, ecs.version, ... the Elastic Common Schema; the time in UTC
///   gcp    time, severity, message, ...                     the agents of Google's Cloud Logging; the time in UTC
///
/// Thread safety: as LOGLayout; settings may be changed while other threads log.
/// Errors: a setting that is not understood is reported and changes nothing. See format() for the rest.
class LOG4VRK_EXPORT LOGJSONLayout : public LOGLayout {
 public:
  LOGJSONLayout();
  explicit LOGJSONLayout(const I18NString& preset);
  LOGJSONLayout(const LOGJSONLayout&) = delete;
  ~LOGJSONLayout() override;

  /// "plain", "ecs" or "gcp", in any case.
  void setPreset(const I18NString& preset);
  /// "iso" for ISO 8601 with microseconds and offset, "epoch" for seconds since 1970 with microseconds, "millis" for
  /// whole milliseconds; the last two are numbers.
  void setTimeFormat(const I18NString& format);
  /// What LOGTimeZone takes. Unless it is set it is UTC, and in the plain preset the process's own.
  void setTimeZone(const I18NString& zone);
  /// What is written of time, level, logger, thread, process, message, nested, context, fields, place and error, with
  /// commas or blanks between. The preset says in which order. At first it is all.
  void setFields(const I18NString& parts);
  /// Other names than those of the preset, with commas or blanks between: "time=ts, message=msg". Besides those of
  /// setFields(), but for fields, a place has file, line and function.
  void setNames(const I18NString& names);

  /// A null event is reported and gives the empty text. An error costs the parts that are not there yet, and one line
  /// in the internal log; one that is not the library's own is raised then.
  I18NString& format(LOGLoggingEvent* event) override;
  I18NString& getContentType() override;
  int ignoresThrowable() override;

 private:
  LOG4VRK_HIDDEN static const LOGLayoutInternals INTERNALS;

  LOG4VRK_HIDDEN static std::string_view formatFast(LOGLayout& layout, LOGLoggingEvent& event);
  LOG4VRK_HIDDEN std::string_view buildAny(LOGLoggingEvent* event);
  LOG4VRK_HIDDEN LOGJSONCopy& copyOf(LOGThreadState& thread);
  template <typename Change>
  LOG4VRK_HIDDEN void change(Change change);

  // As in LOGPatternLayout: what is set has a number of its own, by which a thread sees that its copy is old.
  std::atomic<std::uint64_t> m_number{0};
  std::unique_ptr<LOGJSONSettings> m_settings VRK_GUARDED_BY(m_critSection);
  std::shared_ptr<const LOGJSONForm> m_form VRK_GUARDED_BY(m_critSection);
};
