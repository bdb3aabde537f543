// The base of layouts that begin with a date.

#pragma once

#include <memory>

#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/layouts/LOGTimeZone.h"
#include "log4vrk/layouts/internal/LOGDateFormat.h"

/// Holds a date format and a time zone. They take effect at once and may be set in either order, also while other
/// threads log.
///
/// Thread safety: any thread, except dateFormat(), which is for format() and under the same lock.
class LOG4VRK_EXPORT LOGDateLayout : public LOGLayout {
 public:
  // What setDateFormat() takes besides a pattern of strftime, in any case: see LOGDateFormat.
  static const I18NString& NULL_DATE_FORMAT;
  static const I18NString& RELATIVE_TIME_DATE_FORMAT;
  static const I18NString& ABSOLUTE_TIME_DATE_FORMAT;
  static const I18NString& DATE_AND_TIME_DATE_FORMAT;
  static const I18NString& ISO8601_DATE_FORMAT;

  static const I18NString& DATE_FORMAT_OPTION;  // "DateFormat"
  static const I18NString& TIMEZONE_OPTION;     // "TimeZone"

  /// No date until a format is set; the process's time zone.
  LOGDateLayout();
  ~LOGDateLayout() override;

  /// Either option, its name in any case. Other names are ignored.
  virtual void setOption(const I18NString& option, const I18NString& value);
  virtual I18NString getDateFormat();
  /// Empty: the process's zone. An unknown one is so too, after one warning in the internal log.
  virtual void setTimeZone(const I18NString& name);
  virtual I18NString getTimeZone();
  /// Replaces the buffer by the event's date and a blank; by nothing when there is no date format.
  virtual void dateFormat(I18NString& buffer, LOGLoggingEvent* event);
  /// Keeps the time zone.
  virtual void setDateFormat(const I18NString& format);
  /// Keeps a copy of the zone; null is the process's.
  virtual void setDateFormat(const I18NString& format, LOGTimeZone* zone);

 private:
  void renew() VRK_REQUIRES(m_critSection);

  I18NString m_dateFormatName VRK_GUARDED_BY(m_critSection);
  LOGTimeZone m_timeZone VRK_GUARDED_BY(m_critSection);
  std::unique_ptr<LOGDateFormat> m_dateFormat VRK_GUARDED_BY(m_critSection);  // null: no date
};
