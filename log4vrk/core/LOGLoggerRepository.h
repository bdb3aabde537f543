// What holds the loggers.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKList.h"

class LOGAppenderSkeleton;
class LOGLevel;
class LOGLogger;
class LOGLoggerFactory;

/// See LOGHierarchy, the repository that the library makes.
class LOG4VRK_EXPORT LOGLoggerRepository {
 public:
  virtual ~LOGLoggerRepository();

  virtual bool isDisabled(long level) = 0;
  virtual void setThreshold(LOGLevel* level) = 0;
  virtual void setThreshold(const I18NString& level) = 0;
  virtual void emitNoAppenderWarning(LOGLogger* logger) = 0;
  virtual LOGLevel* getThreshold() = 0;
  virtual LOGLogger* getLogger(const I18NString& name) = 0;
  virtual LOGLogger* getLogger(const I18NString& name, LOGLoggerFactory* factory) = 0;
  virtual LOGLogger* getRootLogger() = 0;
  virtual LOGLogger* exists(const I18NString& name) = 0;
  virtual void shutdown() = 0;
  /// A new list that the caller owns.
  virtual VRKList<LOGLogger*>* getCurrentLoggers() = 0;
  virtual void fireAddAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender) = 0;
  virtual void resetConfiguration() = 0;
};
