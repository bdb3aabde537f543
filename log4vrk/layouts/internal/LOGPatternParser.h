// Reads the patterns of LOGPatternLayout.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "log4vrk/layouts/internal/LOGPatternConverter.h"
#include "log4vrk/platform/I18NString.h"

/// Takes a pattern apart, once. An item is
///
///   % [-] [minimum width] [. maximum width] letter [{option}] [{option}]
///
/// with options for the letters c (one) and d (two) only: braces after other items are text. What cannot be read as an
/// item is text too, and is reported with its place in one line of the internal log. Reading goes on after it.
///
/// Thread safety: none; for one parse().
class LOGPatternParser {
 public:
  /// Keeps no copy of the pattern.
  explicit LOGPatternParser(const I18NString& pattern) : m_pattern(pattern.view()) {}

  std::vector<LOGPatternConverter> parse();

 private:
  void parseItem();
  bool readWidths(LOGPatternConverter& item);
  bool readLetter(LOGPatternConverter& item);
  bool readPrecision(LOGPatternConverter& item);
  bool readDate(LOGPatternConverter& item);

  bool take(char16_t unit);
  std::u16string_view takeDigits();
  /// What is in the braces that stand here; empty without braces. False when they are not closed.
  bool takeBraces(std::u16string_view& content);

  /// Goes in front of the next item.
  void addText(std::u16string_view text);
  void addConverter(LOGPatternConverter converter);
  void report(std::size_t start) const;

  const std::u16string_view m_pattern;
  std::size_t m_next = 0;
  std::string m_text;
  std::vector<LOGPatternConverter> m_converters;
};
