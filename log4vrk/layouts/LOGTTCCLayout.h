// The layout that writes time, thread, level, logger and message on one line.

#pragma once

#include "log4vrk/layouts/LOGDateLayout.h"

/// Writes "<date> [<thread>] <LEVEL> <logger> - <message>" and a line feed. LOGDateLayout has the options for the date.
///
/// Thread safety: as LOGDateLayout. Flags may be set while other threads log.
/// Errors: a null event or an event without a level raises VRKAssertError. Any other error cuts the line off where it
/// occurred, without a line feed, and the internal log has a line.
class LOG4VRK_EXPORT LOGTTCCLayout : public LOGDateLayout {
 public:
  /// Writes milliseconds since the library was loaded as the date.
  LOGTTCCLayout();
  /// `dateFormatType` is what setDateFormat() takes.
  explicit LOGTTCCLayout(const I18NString& dateFormatType);
  ~LOGTTCCLayout() override;

  I18NString& format(LOGLoggingEvent* event) override;
  int ignoresThrowable() override;

  // Flags: anything but 0 is on.
  virtual void setThreadPrinting(int on);
  virtual int getThreadPrinting();
  /// Only kept for getLoggerPrefixing(): the logger's name is always printed.
  virtual void setLoggerPrefixing(int on);
  virtual int getLoggerPrefixing();
  /// Reversed on purpose: when on, an event without a nested context gets one more blank. A context is never printed.
  virtual void setContextPrinting(int on);
  virtual int getContextPrinting();

 private:
  LOG4VRK_HIDDEN void appendParts(I18NString& text, LOGLoggingEvent* event);

  int m_threadPrinting VRK_GUARDED_BY(m_critSection) = 1;
  int m_loggerPrefixing VRK_GUARDED_BY(m_critSection) = 1;
  int m_contextPrinting VRK_GUARDED_BY(m_critSection) = 0;
};
