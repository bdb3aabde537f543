// What the text of a configuration option means.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGLevel;

/// Turns option texts into values. Nothing is ever raised: a text that means nothing gives the default.
///
/// Thread safety: without state; any thread.
class LOG4VRK_EXPORT LOGOptionConverter {
 public:
  LOGOptionConverter() = default;

  /// 1 for "true" and 0 for "false" in any case; blanks are not trimmed.
  static int toBoolean(const I18NString& value, int defaultValue);

  /// The level of that name, null for "null" in any case. "name#class" names the class too: for "LOGLevel" an unknown
  /// name is DEBUG, and any other class gives null, not the default, on purpose: there are no custom levels.
  static LOGLevel* toLevel(const I18NString& value, LOGLevel* defaultLevel);
};
