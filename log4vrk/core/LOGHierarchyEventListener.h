// Who hears that an appender was added.

#pragma once

#include "log4vrk/platform/VRKExport.h"

class LOGAppenderSkeleton;
class LOGLogger;

/// Called with the logger's lock held; log calls made here are delivered after the library call has ended.
///
/// Ownership: the program's, which keeps a listener alive for as long as the repository.
class LOG4VRK_EXPORT LOGHierarchyEventListener {
 public:
  virtual ~LOGHierarchyEventListener();

  virtual void addAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender);
  /// Never called: no repository fires it.
  virtual void removeAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender);

  /// The same object.
  bool operator==(const LOGHierarchyEventListener& other) const { return this == &other; }
};
