// Whether faulty documents are applied.

#pragma once

#include "log4vrk/platform/I18NString.h"

/// Thread safety: any thread.
class LOGDocumentRefusal {
 public:
  /// Off at first.
  static void set(bool isOn);
  /// True when it is on and the document has errors, each of which is written to the internal log then. A file that
  /// cannot be read is left to whoever reads it. Raises what LOGDocumentCheck raises.
  static bool refuses(const I18NString& fileName);
};
