// A text whose parts are there, and which is put together by whoever needs it.

#pragma once

#include <string_view>

#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

/// `parts` are bytes that can be copied anywhere, without a pointer to anything that changes or goes away; only `print`
/// knows what they mean. It may be called on any thread, any number of times, and appends bytes that need not be
/// well-formed. Raises std::bad_alloc alone.
struct LOGPackedText {
  using Print = void (*)(const void* statement, std::string_view parts, I18NUtf8Buffer& out);

  /// The text, in `out`. Valid as long as that is not changed.
  std::string_view printTo(I18NUtf8Buffer& out) const {
    out.clear();
    print(statement, parts, out);
    out.repair();
    return out.view();
  }

  Print print;
  const void* statement;  // a constant of the program
  std::string_view parts;
};
