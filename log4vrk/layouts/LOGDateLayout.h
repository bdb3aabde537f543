// The base of layouts that begin with a date.

#pragma once

#include <memory>

#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/layouts/LOGTimeZone.h"
#include "log4vrk/layouts/internal/LOGDateFormat.h"

/// Holds a date format and a time zone, which a derived layout's format() writes with dateFormat(). Both take effect at
/// once and may be set in either order, also while other threads log.
///
/// Thread safety: any thread may call every operation but dateFormat(), which needs the layout's lock.
/// Errors: none is raised for a bad name: an unknown format is a pattern, an unknown zone is the process's.
class LOG4VRK_EXPORT LOGDateLayout : public LOGLayout {
 public:
  // The names of formats that setDateFormat() knows. It takes them in any case of letters, and takes any other text for
  // a pattern of strftime. LOGDateFormat says what each of them writes.
  static const I18NString& NULL_DATE_FORMAT;
  static const I18NString& RELATIVE_TIME_DATE_FORMAT;
  static const I18NString& ABSOLUTE_TIME_DATE_FORMAT;
  static const I18NString& DATE_AND_TIME_DATE_FORMAT;
  static const I18NString& ISO8601_DATE_FORMAT;

  static const I18NString& DATE_FORMAT_OPTION;  // "DateFormat"
  static const I18NString& TIMEZONE_OPTION;     // "TimeZone"

  /// Writes no date until a format is set. The time zone is the process's.
  LOGDateLayout();
  ~LOGDateLayout() override;

  /// Sets the option "DateFormat" or "TimeZone", its name in any case. Other names are ignored.
  virtual void setOption(const I18NString& option, const I18NString& value);
  virtual I18NString getDateFormat();
  /// Takes the names that LOGTimeZone takes. The empty name is the process's zone; so is an unknown one, after one
  /// warning in the internal log.
  virtual void setTimeZone(const I18NString& name);
  virtual I18NString getTimeZone();
  /// Makes `buffer` the event's date and a blank, or empty when there is no date format. The caller holds the lock.
  virtual void dateFormat(I18NString& buffer, LOGLoggingEvent* event);
  /// Leaves the time zone as it is.
  virtual void setDateFormat(const I18NString& format);
  /// Keeps a copy of `zone`; null is the process's zone.
  virtual void setDateFormat(const I18NString& format, LOGTimeZone* zone);

 private:
  LOG4VRK_HIDDEN void renew() VRK_REQUIRES(m_critSection);

  I18NString m_dateFormatName VRK_GUARDED_BY(m_critSection);
  LOGTimeZone m_timeZone VRK_GUARDED_BY(m_critSection);
  std::unique_ptr<LOGDateFormat> m_dateFormat VRK_GUARDED_BY(m_critSection);  // null: no date is written
};
