// The factory of plain loggers.

#pragma once

#include "log4vrk/core/LOGLoggerFactory.h"

class LOG4VRK_EXPORT LOGDefaultLoggerFactory : public LOGLoggerFactory {
 public:
  ~LOGDefaultLoggerFactory() override;

  /// Null when there is no memory.
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override;
};
