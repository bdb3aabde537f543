// What makes the loggers of a repository.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGLogger;

/// Thread safety: several threads may ask one factory at once.
class LOG4VRK_EXPORT LOGLoggerFactory {
 public:
  virtual ~LOGLoggerFactory();

  /// A new logger for the repository to own. No lock of the library is held.
  virtual LOGLogger* makeNewLoggerInstance(const I18NString& name) = 0;
};
