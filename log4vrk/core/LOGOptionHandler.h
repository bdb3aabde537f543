// Whatever takes options and is then activated.

#pragma once

#include "log4vrk/platform/VRKExport.h"

class LOG4VRK_EXPORT LOGOptionHandler {
 public:
  virtual ~LOGOptionHandler();

  /// Called once all options have been set.
  virtual void activateOptions() = 0;
};
