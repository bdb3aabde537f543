#include "log4vrk/core/LOGErrorHandler.h"

#include "log4vrk/platform/VRKThrowable.h"

LOGErrorHandler::LOGErrorHandler() { instance("LOGErrorHandler"); }
LOGErrorHandler::~LOGErrorHandler() = default;

void LOGErrorHandler::setLogger(LOGLogger*) {}
void LOGErrorHandler::error(const I18NString&) {}
void LOGErrorHandler::setAppender(LOGAppenderSkeleton*) {}
void LOGErrorHandler::setBackupAppender(LOGAppenderSkeleton*) {}
void LOGErrorHandler::error(const I18NString&, VRKThrowable&, int) {}
void LOGErrorHandler::error(const I18NString&, VRKThrowable&, int, LOGLoggingEvent*) {}

LOGErrorHandler* LOGErrorHandler::clone() const { return vrkNew<LOGErrorHandler>(VRK_HERE, *this); }
