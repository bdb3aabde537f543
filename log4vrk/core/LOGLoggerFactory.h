// The interface of what makes the loggers of a repository.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGLogger;

/// A program derives from it to have loggers of its own class.
///
/// Thread safety: several threads may ask one factory at once, even for the same name: one of the loggers is then used.
/// Ownership: the factory stays the program's, the loggers are the repository's.
/// Errors: what it raises goes to the caller of getLogger(); null raises VRKAssertError there.
class LOG4VRK_EXPORT LOGLoggerFactory {
 public:
  virtual ~LOGLoggerFactory();

  /// A new logger of this name, for the repository to own. getLogger() holds no lock meanwhile, so that a factory may
  /// look loggers up. Its log calls are put off until the outermost library call of the thread is over.
  virtual LOGLogger* makeNewLoggerInstance(const I18NString& name) = 0;
};
