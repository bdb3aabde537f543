// The root of the logger tree.

#pragma once

#include "log4vrk/core/LOGLogger.h"

class LOG4VRK_EXPORT LOGRootLogger : public LOGLogger {
 public:
  /// Null stands for DEBUG. Clearing the level later is not prevented, and makes log calls raise an assertion.
  explicit LOGRootLogger(LOGLevel* level);
  ~LOGRootLogger() override;

  LOGLevel* getChainedLevel() const { return getLevel(); }
  LOGObject* clone() const override;

 protected:
  LOGRootLogger(const LOGRootLogger& other);
};
