// The factory of plain loggers, which a repository uses unless it is given another.

#pragma once

#include "log4vrk/core/LOGLoggerFactory.h"

class LOG4VRK_EXPORT LOGDefaultLoggerFactory : public LOGLoggerFactory {
 public:
  ~LOGDefaultLoggerFactory() override;

  /// Null when there is no memory, which the repository reports.
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override;
};
