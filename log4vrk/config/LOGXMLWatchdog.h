// A watchdog that configures again when the document has changed.

#pragma once

#include "log4vrk/config/LOGFileWatchdog.h"

/// See LOGFileWatchdog. Making one for a document that is there configures from it at once.
class LOG4VRK_EXPORT LOGXMLWatchdog : public LOGFileWatchdog {
 public:
  explicit LOGXMLWatchdog(const I18NString& fileName);
  ~LOGXMLWatchdog() override;

  /// Configures from the document.
  void doOnChange() override;
};
