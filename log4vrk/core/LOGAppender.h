// The interface of every destination of log output.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGErrorHandler;
class LOGFilter;
class LOGLayout;
class LOGLoggingEvent;

/// See LOGAppenderSkeleton, from which every appender derives.
class LOG4VRK_EXPORT LOGAppender {
 public:
  virtual ~LOGAppender();

  virtual void addFilter(LOGFilter* filter) = 0;
  virtual void clearFilters() = 0;
  virtual void close() = 0;
  virtual void doAppend(LOGLoggingEvent* event) = 0;
  virtual const I18NString& getName() const = 0;
  virtual void setErrorHandler(LOGErrorHandler* handler) = 0;
  virtual LOGErrorHandler* getErrorHandler() const = 0;
  virtual void setLayout(LOGLayout* layout) = 0;
  virtual LOGLayout* getLayout() const = 0;
  virtual void setName(const I18NString& name) = 0;
  virtual bool requiresLayout() = 0;
};
