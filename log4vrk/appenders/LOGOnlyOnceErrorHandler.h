// An error handler that reports the first failure and keeps silent afterwards.

#pragma once

#include <atomic>

#include "log4vrk/core/LOGErrorHandler.h"

/// Writes the first failure, of whatever kind, to the internal log. A copy of one that has reported is silent too.
///
/// Thread safety: any thread.
class LOG4VRK_EXPORT LOGOnlyOnceErrorHandler : public LOGErrorHandler {
 public:
  LOGOnlyOnceErrorHandler();
  LOGOnlyOnceErrorHandler(const LOGOnlyOnceErrorHandler& other);
  ~LOGOnlyOnceErrorHandler() override;

  void error(const I18NString& message) override;
  void error(const I18NString& message, VRKThrowable& cause, int errorCode) override;
  void error(const I18NString& message, VRKThrowable& cause, int errorCode, LOGLoggingEvent* event) override;
  LOGOnlyOnceErrorHandler* clone() const override;

 private:
  std::atomic<int> m_firstTime{1};  // 0 once a failure has been reported
};
