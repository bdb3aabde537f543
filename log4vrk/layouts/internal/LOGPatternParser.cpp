#include "log4vrk/layouts/internal/LOGPatternParser.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "log4vrk/core/LOGLogLog.h"

namespace {

constexpr std::u16string_view DIGITS = u"0123456789";
constexpr std::u16string_view PLAIN_LETTERS = u"%CFLMlmnptx";

// Where numbers end: more than any text has characters. Ten times as many and 9 still fit into 32 bits, so that reading
// one more digit cannot overflow.
constexpr std::size_t LARGEST_NUMBER = 400000000;

std::size_t numberOf(std::u16string_view digits) {
  std::size_t number = 0;
  for (const char16_t digit : digits) number = std::min<std::size_t>(10 * number + (digit - u'0'), LARGEST_NUMBER);
  return number;
}

bool isHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool isLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

// For people, who count an emoji as one character: a surrogate pair counts once.
std::size_t charactersIn(std::u16string_view text) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (i == 0 || !isLowSurrogate(text[i]) || !isHighSurrogate(text[i - 1])) ++count;
  }
  return count;
}

}  // namespace

std::vector<LOGPatternConverter> LOGPatternParser::parse() {
  while (m_next < m_pattern.size()) {
    const std::size_t percent = std::min(m_pattern.find(u'%', m_next), m_pattern.size());
    addText(m_pattern.substr(m_next, percent - m_next));
    m_next = percent;
    if (take(u'%')) parseItem();
  }
  if (!m_text.empty()) addConverter(LOGPatternConverter());
  return std::move(m_converters);
}

void LOGPatternParser::parseItem() {
  const std::size_t start = m_next - 1;  // the percent sign
  LOGPatternConverter item;
  if (readWidths(item) && readLetter(item)) {
    // A line feed or percent sign of no fixed width joins the text around it, which is copied in one go.
    const bool isText = item.letter == u'n' || item.letter == u'%';
    if (isText && !item.isFitted()) {
      addText(item.letter == u'n' ? u"\n" : u"%");
    } else {
      addConverter(std::move(item));
    }
    return;
  }
  report(start);
  addText(m_pattern.substr(start, m_next - start));
}

bool LOGPatternParser::readWidths(LOGPatternConverter& item) {
  item.leftAligned = take(u'-');
  item.minimumWidth = std::min(numberOf(takeDigits()), LOGPatternConverter::MOST_PADDED);
  if (!take(u'.')) return true;
  const std::u16string_view digits = takeDigits();
  item.maximumWidth = numberOf(digits);
  return !digits.empty();
}

// Reads the options, too. False leaves behind what has been read, which is then reported and written as text.
bool LOGPatternParser::readLetter(LOGPatternConverter& item) {
  if (m_next == m_pattern.size()) return false;
  item.letter = m_pattern[m_next++];
  switch (item.letter) {
    case u'c':
      return readPrecision(item);
    case u'd':
      return readDate(item);
    case u's':
      return readPlace(item);
    case u'X':
      return readKey(item);
    case u'e':
      item.letter = u'm';  // the same, escaped
      item.isSafe = true;
      return true;
    case u'r':
      item.letter = u'd';  // it is written like other dates, and has no code of its own
      item.date = LOGDateFormat::create("RELATIVE");
      return true;
    default:
      break;
  }
  if (PLAIN_LETTERS.find(item.letter) != std::u16string_view::npos) return true;
  // A letter outside the Basic Multilingual Plane is two units. Both belong to what is reported.
  if (isHighSurrogate(item.letter) && m_next < m_pattern.size() && isLowSurrogate(m_pattern[m_next])) ++m_next;
  return false;
}

bool LOGPatternParser::readPrecision(LOGPatternConverter& item) {
  std::u16string_view digits;
  if (!takeBraces(digits) || digits.find_first_not_of(DIGITS) != std::u16string_view::npos) return false;
  item.precision = numberOf(digits);
  return true;
}

bool LOGPatternParser::readDate(LOGPatternConverter& item) {
  std::u16string_view format, zone;
  if (!takeBraces(format) || !takeBraces(zone)) return false;
  item.date = LOGDateFormat::create(format.empty() ? "ISO8601" : I18NString(format), LOGTimeZone(I18NString(zone)));
  return true;
}

bool LOGPatternParser::readPlace(LOGPatternConverter& item) {
  static constexpr std::u16string_view NAMES[] = {u"", u"file", u"path", u"line", u"function"};  // in the enum's order
  std::u16string_view name;
  if (!takeBraces(name)) return false;
  const auto found = std::find(std::begin(NAMES), std::end(NAMES), name);
  item.place = static_cast<LOGPatternConverter::Place>(found - std::begin(NAMES));
  return found != std::end(NAMES);
}

bool LOGPatternParser::readKey(LOGPatternConverter& item) {
  std::u16string_view key;
  if (!takeBraces(key)) return false;
  item.key = I18NString(key).toUtf8();
  return true;
}

bool LOGPatternParser::take(char16_t unit) {
  if (m_next == m_pattern.size() || m_pattern[m_next] != unit) return false;
  ++m_next;
  return true;
}

std::u16string_view LOGPatternParser::takeDigits() {
  const std::size_t begin = m_next;
  m_next = std::min(m_pattern.find_first_not_of(DIGITS, begin), m_pattern.size());
  return m_pattern.substr(begin, m_next - begin);
}

bool LOGPatternParser::takeBraces(std::u16string_view& content) {
  if (!take(u'{')) return true;
  const std::size_t end = m_pattern.find(u'}', m_next);
  if (end == std::u16string_view::npos) return false;
  content = m_pattern.substr(m_next, end - m_next);
  m_next = end + 1;
  return true;
}

void LOGPatternParser::addText(std::u16string_view text) { m_text += I18NString(text).toUtf8(); }

void LOGPatternParser::addConverter(LOGPatternConverter converter) {
  converter.setText(std::move(m_text));
  m_text.clear();
  m_converters.push_back(std::move(converter));
}

void LOGPatternParser::report(std::size_t start) const {
  I18NString text = "LOGPatternLayout::setConversionPattern -- [";
  text += I18NString(m_pattern.substr(start, m_next - start));
  text += "] at character ";
  text += charactersIn(m_pattern.substr(0, start)) + 1;
  text += " of the pattern is not understood and is written as it stands.";
  LOGLogLog::error(text);
}
