// Time, thread, level, logger and message on one line.

#pragma once

#include "log4vrk/layouts/LOGDateLayout.h"

/// "<date> [<thread>] <LEVEL> <logger> - <message>" and a line feed. Date format and time zone are the options of
/// LOGDateLayout.
///
/// Thread safety: as LOGDateLayout; flags may be set while other threads log.
/// Errors: a null event or an event without a level raises VRKAssertError. Any other error is noted in the internal
/// log, and the line ends, without a line feed, where it had got to.
class LOG4VRK_EXPORT LOGTTCCLayout : public LOGDateLayout {
 public:
  /// Dates are milliseconds since the library was loaded.
  LOGTTCCLayout();
  explicit LOGTTCCLayout(const I18NString& dateFormatType);
  ~LOGTTCCLayout() override;

  I18NString& format(LOGLoggingEvent* event) override;
  int ignoresThrowable() override;

  // Flags: anything but 0 is on.
  virtual void setThreadPrinting(int on);
  virtual int getThreadPrinting();
  /// Kept for the caller only: the logger's name is always printed.
  virtual void setLoggerPrefixing(int on);
  virtual int getLoggerPrefixing();
  /// When on, an event without nested context gets one more blank. A context is not printed.
  virtual void setContextPrinting(int on);
  virtual int getContextPrinting();

 private:
  void appendParts(I18NString& text, LOGLoggingEvent* event);

  int m_threadPrinting VRK_GUARDED_BY(m_critSection) = 1;
  int m_loggerPrefixing VRK_GUARDED_BY(m_critSection) = 1;
  int m_contextPrinting VRK_GUARDED_BY(m_critSection) = 0;
};
