// The two calls that an embedding program makes.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// Thread safety: any thread.
/// Failures: nothing is raised; the internal log says what went wrong.
class LOG4VRK_EXPORT LOG4VRKConfigurator {
 public:
  LOG4VRKConfigurator();
  virtual ~LOG4VRKConfigurator();

  /// Configures the library from an XML document. 1 when the document was read and applied. 0 when it could not be read
  /// or parsed, or its root is not known, and then nothing has changed; also when the library of its categoryFactory is
  /// missing, which ends the run: then the threshold and the internal log's switches may have changed, and no logger.
  static int initialize(const I18NString& fileName);
  /// Closes all appenders, delivers what is still queued, and closes the internal log. Log calls may still be made;
  /// they write nothing.
  static void shutdown();
};
