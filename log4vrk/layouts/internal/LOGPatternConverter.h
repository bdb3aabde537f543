// One piece of a pattern, ready to be written for each event.

#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/layouts/internal/LOGDateFormat.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

/// What LOGPatternParser makes of an item such as "%-5p" and the text in front of it. One struct with a switch and no
/// class for each kind: a line is written by one loop without virtual calls, except for dates.
///
/// Thread safety: not thread-safe, since dates are kept; each thread has copies.
struct LOGPatternConverter {
  /// The largest minimum width.
  static constexpr std::size_t MOST_PADDED = 1000;

  LOGPatternConverter() = default;
  LOGPatternConverter(const LOGPatternConverter& other);
  LOGPatternConverter(LOGPatternConverter&&) noexcept = default;
  LOGPatternConverter& operator=(LOGPatternConverter&&) noexcept = default;

  bool isFitted() const { return minimumWidth > 0 || maximumWidth != I18NString::npos; }
  /// Whether the pattern alone says what it writes.
  bool isText() const { return letter == 0 || letter == u'n' || letter == u'%'; }
  void append(I18NUtf8Buffer& out, LOGLoggingEvent& event, std::string_view message);

  // A faster way for the most frequent items: several in a row are written into memory that has room for all of them.
  /// Whether put() can write it.
  bool isFrequent() const;
  /// Has put() write this level from now on. False when it is too long for that.
  bool setLevel(const I18NString& name);
  /// The same as append() to `out`, where there is room. Returns the end.
  char* put(char* out, const std::string& logger, std::string_view message) const;
  /// How many bytes put() may need beside those of logger and message.
  static constexpr std::size_t MOST_PUT = 32;

  char16_t letter = 0;  // of the item; 0 when there is none, only the text
  bool leftAligned = false;
  // In UTF-16 units.
  std::size_t minimumWidth = 0;
  std::size_t maximumWidth = I18NString::npos;
  std::size_t precision = 0;  // how many components of the logger's name; 0 is all
  bool isSafe = false;        // what it writes has control characters and their like escaped
  std::string key;            // letter X: the name of the one field; empty: all
  enum Place { FILE_AND_LINE, FILE, PATH, LINE, FUNCTION } place = FILE_AND_LINE;  // letter s
  std::string text;                                                                // in front of the item; in UTF-8
  char shortText[16] = {};              // the same when it fits, copied as one block
  std::unique_ptr<LOGDateFormat> date;  // letter d; null is no date

  void setText(std::string&& utf8);

 private:
  void appendItem(I18NUtf8Buffer& out, LOGLoggingEvent& event, std::string_view message);
  void appendLoggerName(I18NUtf8Buffer& out, const LOGLoggingEvent& event) const;
  void fit(I18NUtf8Buffer& out, std::size_t start) const;
  std::size_t fitUtf16(I18NUtf8Buffer& out, std::size_t start) const;

  char m_level[16] = {};  // the name, fitted to the widths
  std::size_t m_levelSize = 0;
};

inline char* LOGPatternConverter::put(char* out, const std::string& logger, std::string_view message) const {
  // The whole block, of which the beginning counts: a copy of constant size needs no call and no loop.
  std::memcpy(out, shortText, sizeof shortText);
  out += text.size();
  switch (letter) {
    case u'p':
      std::memcpy(out, m_level, sizeof m_level);
      return out + m_levelSize;
    case u'c':
      return I18NUtf8Buffer::copy(out, logger);
    case u'm':
      return I18NUtf8Buffer::copy(out, message);
    default:
      return out;
  }
}
