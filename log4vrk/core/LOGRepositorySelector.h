// The interface of what decides which repository a program logs to.

#pragma once

#include "log4vrk/platform/VRKExport.h"

class LOGLoggerRepository;

/// LOGManager::setRepositorySelector() sets it.
///
/// Thread safety: several threads may ask at once.
/// Ownership: selector and repositories are lent, and must stay until the process ends.
class LOG4VRK_EXPORT LOGRepositorySelector {
 public:
  virtual ~LOGRepositorySelector();

  /// The repository of the call that is being made. Never null.
  virtual LOGLoggerRepository* getLoggerRepository() = 0;
};
