// Conversion of text to a limited number of bytes.

#pragma once

#include <cstddef>
#include <string>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// Thread safety: without state; any thread.
class LOG4VRK_EXPORT I18NConverter {
 public:
  /// The beginning of the text in UTF-8: as many whole characters as fit into `limit` bytes.
  static std::string fromUnicodeStream(const I18NString& text, std::size_t limit);
};
