// Conversion of text to bytes under a limit.

#pragma once

#include <cstddef>
#include <string>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// Thread safety: without state; any thread.
class LOG4VRK_EXPORT I18NConverter {
 public:
  /// The text in UTF-8, as much of it as fits into `limit` bytes without cutting a character.
  static std::string fromUnicodeStream(const I18NString& text, std::size_t limit);
};
