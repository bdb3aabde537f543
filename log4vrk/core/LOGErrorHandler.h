// Where appenders report failures.

#pragma once

#include "log4vrk/core/LOGObject.h"
#include "log4vrk/core/LOGOptionHandler.h"
#include "log4vrk/platform/VRKExport.h"

class LOGAppenderSkeleton;
class LOGLogger;
class LOGLoggingEvent;
class VRKThrowable;

/// Takes the failures of one appender. This one ignores everything.
///
/// Thread safety: called under the lock of the appender that owns it.
class LOG4VRK_EXPORT LOGErrorHandler : public LOGOptionHandler, public LOGObject {
 public:
  LOGErrorHandler();
  ~LOGErrorHandler() override;

  void activateOptions() override {}
  virtual void setLogger(LOGLogger* logger);
  virtual void error(const I18NString& message);
  virtual void setAppender(LOGAppenderSkeleton* appender);
  virtual void setBackupAppender(LOGAppenderSkeleton* appender);
  virtual void error(const I18NString& message, VRKThrowable& cause, int errorCode);
  virtual void error(const I18NString& message, VRKThrowable& cause, int errorCode, LOGLoggingEvent* event);
  LOGErrorHandler* clone() const override;
};
