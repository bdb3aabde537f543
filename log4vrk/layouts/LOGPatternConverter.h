// One piece of a pattern, ready to be written for each event.

#pragma once

#include <cstddef>
#include <memory>

#include "log4vrk/layouts/LOGDateFormat.h"
#include "log4vrk/platform/I18NString.h"

class LOGLoggingEvent;

/// What LOGPatternParser makes of an item such as "%-5p", or of the text between two items. One struct with a switch
/// and no class for each kind: a line is written by one loop without virtual calls, except for dates.
///
/// Thread safety: not thread-safe, since dates are kept; a layout uses its converters under its lock.
struct LOGPatternConverter {
  /// The largest minimum width.
  static constexpr std::size_t MOST_PADDED = 1000;

  /// Appends the piece. `message` is the rendered message, or null.
  void append(I18NString& out, LOGLoggingEvent& event, const I18NString* message);

  char16_t letter = 0;  // of the item; 0 for text
  bool leftAligned = false;
  // In UTF-16 units.
  std::size_t minimumWidth = 0;
  std::size_t maximumWidth = I18NString::npos;
  std::size_t precision = 0;            // how many components of the logger's name; 0 is all
  I18NString text;                      // letter 0
  std::unique_ptr<LOGDateFormat> date;  // letter d; null is no date

 private:
  void fit(I18NString& out, std::size_t start) const;
};
