// Where a quiet writer can send text other than to a file.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// A sink for text, such as a socket.
///
/// Thread safety: called under the lock of the appender that writes to it.
/// Errors: what write() raises passes through the quiet writer to the appender.
class LOG4VRK_EXPORT LOGWriter {
 public:
  virtual ~LOGWriter();

  /// Never called with an empty text.
  virtual void write(const I18NString& text) = 0;
  virtual void flush() = 0;
  /// flush() has been called before.
  virtual void close() = 0;
};
