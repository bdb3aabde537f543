// Which repository a program logs to.

#pragma once

#include "log4vrk/platform/VRKExport.h"

class LOGLoggerRepository;

/// Thread safety: asked by any thread at once.
class LOG4VRK_EXPORT LOGRepositorySelector {
 public:
  virtual ~LOGRepositorySelector();

  virtual LOGLoggerRepository* getLoggerRepository() = 0;
};
