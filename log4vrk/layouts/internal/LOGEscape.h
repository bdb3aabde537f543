// Texts in which nothing can be taken for anything but text.

#pragma once

#include <cstddef>
#include <string_view>

#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

/// Each form escapes control characters (U+0000 to U+001F, U+007F to U+009F), the line separators U+2028 and U+2029,
/// marks that change the direction of writing (U+061C, U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069), and the
/// backslash itself. So no text ends a line, drives a terminal or shows itself in another order than it has. Texts are
/// well-formed UTF-8, and stay it.
///
/// Thread safety: without state; any thread.
struct LOGEscape {
  /// For between the quotes of a string of JSON: \", \\, \b, \t, \n, \f, \r, all others as \u001b.
  static void appendJson(I18NUtf8Buffer& out, std::string_view utf8);
  /// For people: \\, \t, \n, \r, others as \x1b, and from U+0080 on as \u2028. It can be undone.
  static void appendSafe(I18NUtf8Buffer& out, std::string_view utf8);
  // The same of what `out` has from `start` on.
  static void makeJson(I18NUtf8Buffer& out, std::size_t start);
  static void makeSafe(I18NUtf8Buffer& out, std::size_t start);
  /// Safe, and in double quotes where a blank, a quote or an equals sign is in it, or nothing.
  static void appendWord(I18NUtf8Buffer& out, std::string_view utf8);
};
