// The parser of LOGPatternLayout's patterns.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "log4vrk/layouts/internal/LOGPatternConverter.h"
#include "log4vrk/platform/I18NString.h"

/// Takes a pattern apart into converters, once when it is set. An item of a pattern is
///
///   % [-] [minimum width] [. maximum width] letter [{option}] [{option}]
///
/// Only the letters c, s and X (one option) and d (two) take options: braces after other letters are text. What cannot
/// be read as an item is text too. The internal log has one line for each such place, and reading goes on behind it.
///
/// Thread safety: not thread-safe. An object serves one parse().
class LOGPatternParser {
 public:
  /// `pattern` must outlive this object, which keeps no copy.
  explicit LOGPatternParser(const I18NString& pattern) : m_pattern(pattern.view()) {}

  std::vector<LOGPatternConverter> parse();

 private:
  void parseItem();
  bool readWidths(LOGPatternConverter& item);
  bool readLetter(LOGPatternConverter& item);
  bool readPrecision(LOGPatternConverter& item);
  bool readDate(LOGPatternConverter& item);
  bool readPlace(LOGPatternConverter& item);
  bool readKey(LOGPatternConverter& item);

  bool take(char16_t unit);
  std::u16string_view takeDigits();
  /// Reads what stands in the braces here, or nothing where there are none. False when they are not closed.
  bool takeBraces(std::u16string_view& content);

  /// Adds to the text that will stand in front of the next item.
  void addText(std::u16string_view text);
  void addConverter(LOGPatternConverter converter);
  void report(std::size_t start) const;

  const std::u16string_view m_pattern;
  std::size_t m_next = 0;
  std::string m_text;  // in front of the next item; in UTF-8
  std::vector<LOGPatternConverter> m_converters;
};
