// Whatever appenders can be attached to.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGAppenderSkeleton;
template <typename T>
class VRKListIterator;  // log4vrk/platform/VRKList.h

class LOG4VRK_EXPORT LOGAppenderAttachable {
 public:
  virtual ~LOGAppenderAttachable();

  virtual void addAppender(LOGAppenderSkeleton* newAppender) = 0;
  /// Walks the living list: changing the appenders meanwhile is the caller's to serialise.
  virtual VRKListIterator<LOGAppenderSkeleton*> getAllAppenders() = 0;
  virtual LOGAppenderSkeleton* getAppender(const I18NString& name) = 0;
  virtual bool isAttached(LOGAppenderSkeleton* appender) = 0;
  virtual void removeAllAppenders() = 0;
  virtual void removeAppender(LOGAppenderSkeleton* appender) = 0;
  virtual void removeAppender(const I18NString& name) = 0;
};
