// Where appenders report failures.

#pragma once

#include "log4vrk/core/LOGObject.h"
#include "log4vrk/core/LOGOptionHandler.h"
#include "log4vrk/platform/VRKExport.h"

class LOGAppenderSkeleton;
class LOGLogger;
class LOGLoggingEvent;
class VRKThrowable;

/// Takes the failures of one appender. This one ignores everything. Of the library's appenders only the syslog appender
/// reports to its handler; the others write their failures to the internal log.
///
/// Thread safety: called under the lock of the appender that has it.
/// Ownership: an appender owns the handler that setErrorHandler() hands over. Logger and appenders named here are lent.
/// Errors: what a handler raises while the syslog appender reports to it is dropped.
class LOG4VRK_EXPORT LOGErrorHandler : public LOGOptionHandler, public LOGObject {
 public:
  LOGErrorHandler();
  ~LOGErrorHandler() override;

  void activateOptions() override {}
  virtual void setLogger(LOGLogger* logger);
  /// A failure of which only a description is known.
  virtual void error(const I18NString& message);
  virtual void setAppender(LOGAppenderSkeleton* appender);
  /// The appender to use instead of one that failed. A document may name it, but no handler of this library uses it.
  virtual void setBackupAppender(LOGAppenderSkeleton* appender);
  /// `cause` is lent for the call. What `errorCode` means is up to who calls.
  virtual void error(const I18NString& message, VRKThrowable& cause, int errorCode);
  /// The same, with the event that could not be written; lent for the call, and null when there is none.
  virtual void error(const I18NString& message, VRKThrowable& cause, int errorCode, LOGLoggingEvent* event);
  LOGErrorHandler* clone() const override;
};
