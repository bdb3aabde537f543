#include "log4vrk/appenders/LOGOnlyOnceErrorHandler.h"

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/platform/VRKThrowable.h"

LOGOnlyOnceErrorHandler::LOGOnlyOnceErrorHandler() { instance("LOGOnlyOnceErrorHandler"); }

LOGOnlyOnceErrorHandler::LOGOnlyOnceErrorHandler(const LOGOnlyOnceErrorHandler& other)
    : LOGErrorHandler(other), m_firstTime(other.m_firstTime.load()) {}

LOGOnlyOnceErrorHandler::~LOGOnlyOnceErrorHandler() = default;

// Exchanged in one step, so that of several threads that fail at once one reports.
void LOGOnlyOnceErrorHandler::error(const I18NString& message) {
  if (m_firstTime.exchange(0) == 1) LOGLogLog::error(message);
}

void LOGOnlyOnceErrorHandler::error(const I18NString& message, VRKThrowable& cause, int errorCode) {
  error(message, cause, errorCode, nullptr);
}

void LOGOnlyOnceErrorHandler::error(const I18NString& message, VRKThrowable& cause, int, LOGLoggingEvent*) {
  if (m_firstTime.exchange(0) == 1) LOGLogLog::error(message, cause);
}

LOGOnlyOnceErrorHandler* LOGOnlyOnceErrorHandler::clone() const {
  return vrkNew<LOGOnlyOnceErrorHandler>(VRK_HERE, *this);
}
