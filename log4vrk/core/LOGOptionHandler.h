// The interface of what takes options and is then activated.

#pragma once

#include "log4vrk/platform/VRKExport.h"

/// Thread safety: as the derived class says.
class LOG4VRK_EXPORT LOGOptionHandler {
 public:
  virtual ~LOGOptionHandler();

  /// Called when all options have been set. Until then they need not take effect.
  virtual void activateOptions() = 0;
};
