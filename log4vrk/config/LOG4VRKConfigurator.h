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
  /// Not 0: from now on a document that LOGDocumentCheck finds errors in is refused, by initialize() and by watchdogs.
  /// Nothing has changed then, and getProblems() has the errors. The check looks at files, libraries and hosts too.
  static void setRefuseFaultyDocuments(int on);
  /// What stands for ${name} in documents that say substitute="true", in place of a variable of the environment, from
  /// the next time on that one is read. An empty value takes it away. A name has letters, digits, _ and . only; any
  /// other is refused with a line in the internal log.
  static void setVariable(const I18NString& name, const I18NString& value);
  /// What went wrong in the last configuration run of the process that has ended: a line for each warning and error, in
  /// order, empty when there were none. It begins with "FILE:LINE: ", or "FILE: " when the line is not known, and names
  /// the logger, appender and parameter that it is about. Whether the internal log is switched on makes no difference.
  static I18NString getProblems();
  /// Closes all appenders, delivers what is still queued, and closes the internal log. Log calls may still be made;
  /// they write nothing.
  static void shutdown();
};
