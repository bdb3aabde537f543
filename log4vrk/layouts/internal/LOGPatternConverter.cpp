#include "log4vrk/layouts/internal/LOGPatternConverter.h"

#include <algorithm>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGSourceLocation.h"
#include "log4vrk/core/internal/LOGEventFields.h"
#include "log4vrk/layouts/internal/LOGEscape.h"

namespace {

// How much of a name stands before its last `count` components. A dot at the very end belongs to the last one.
std::size_t lengthBeforeLast(std::size_t count, std::u16string_view name) {
  std::size_t begin = name.size();
  for (; count > 0; --count) {
    if (begin < 2) return 0;
    const std::size_t dot = name.rfind(u'.', begin - 2);
    if (dot == std::u16string_view::npos) return 0;
    begin = dot + 1;
  }
  return begin;
}

void appendLocation(I18NUtf8Buffer& out, char16_t letter, const LOGLocationInfo& location) {
  switch (letter) {
    case u'C':
      out.append(location.getClassName());
      break;
    case u'F':
      out.append(location.getFileName());
      break;
    case u'L':
      out.append(location.getLineNumber());
      break;
    case u'M':
      out.append(location.getMethodName());
      break;
    case u'l':
      out.append(location.getClassName());
      out.appendChecked(".");
      out.append(location.getMethodName());
      out.appendChecked("(");
      out.append(location.getFileName());
      out.appendChecked(":");
      out.append(location.getLineNumber());
      out.appendChecked(")");
      break;
    default:
      break;
  }
}

void appendPlace(I18NUtf8Buffer& out, LOGPatternConverter::Place what, const LOGSourceLocation* place) {
  if (place == nullptr) return out.appendChecked(LOGLocationInfo::m_NA.toUtf8());
  const std::string_view path = place->file;
  if (what == LOGPatternConverter::PATH) out.append(path);
  if (what == LOGPatternConverter::FUNCTION) out.append(std::string_view(place->function));
  const bool hasLine = what == LOGPatternConverter::FILE_AND_LINE || what == LOGPatternConverter::LINE;
  // Without a slash npos + 1 is the beginning.
  if (what == LOGPatternConverter::FILE_AND_LINE || what == LOGPatternConverter::FILE) {
    out.append(path.substr(path.rfind('/') + 1));
    if (hasLine) out.appendChecked(":");
  }
  if (hasLine) out.append(static_cast<long long>(place->line));
}

// Names and values, context before fields; or the value of one.
void appendFields(I18NUtf8Buffer& out, const LOGLoggingEvent& event, const std::string& key) {
  const LOGEventFields fields(event);
  if (!key.empty()) {
    LOGFields::Field field;
    if (fields.find(key, field)) field.appendValue(out);
    return;
  }
  const std::size_t start = out.size();
  const auto append = [&](const LOGFields::Field& field) {
    if (out.size() > start) out.appendChecked(" ");
    LOGEscape::appendWord(out, field.name);
    out.appendChecked("=");
    if (field.type == LOGFields::TEXT) {
      LOGEscape::appendWord(out, field.value);
    } else {
      field.appendValue(out);
    }
  };
  fields.eachOfContext(append);
  fields.eachOwn(append);
}

bool isAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

// Whether a cut at `position` would leave half a character on each side.
bool splitsPair(const I18NString& text, std::size_t position) {
  return (text[position - 1] & 0xFC00) == 0xD800 && (text[position] & 0xFC00) == 0xDC00;
}

}  // namespace

LOGPatternConverter::LOGPatternConverter(const LOGPatternConverter& other)
    : letter(other.letter),
      leftAligned(other.leftAligned),
      minimumWidth(other.minimumWidth),
      maximumWidth(other.maximumWidth),
      precision(other.precision),
      isSafe(other.isSafe),
      key(other.key),
      place(other.place),
      date(other.date != nullptr ? other.date->clone() : nullptr) {
  setText(std::string(other.text));
}

void LOGPatternConverter::append(I18NUtf8Buffer& out, LOGLoggingEvent& event, std::string_view message) {
  out.appendChecked(text);
  const std::size_t start = out.size();
  appendItem(out, event, message);
  if (isSafe) LOGEscape::makeSafe(out, start);
  if (isFitted()) fit(out, start);
}

// Those whose length is known beforehand: at most MOST_PUT bytes beside the logger's name and the message. Widths are
// no hindrance for a level, which setLevel() fits once and not in every line.
bool LOGPatternConverter::isFrequent() const {
  if (text.size() > sizeof shortText || isSafe) return false;
  return letter == 0 || letter == u'p' || (!isFitted() && (letter == u'm' || (letter == u'c' && precision == 0)));
}

bool LOGPatternConverter::setLevel(const I18NString& name) {
  char room[64];
  I18NUtf8Buffer written(room, sizeof room);
  written.append(name);
  if (isFitted()) fit(written, 0);
  if (written.size() > sizeof m_level) return false;
  m_levelSize = written.view().copy(m_level, sizeof m_level);
  return true;
}

void LOGPatternConverter::setText(std::string&& utf8) {
  text = std::move(utf8);
  if (text.size() <= sizeof shortText) std::copy(text.begin(), text.end(), shortText);
}

void LOGPatternConverter::appendLoggerName(I18NUtf8Buffer& out, const LOGLoggingEvent& event) const {
  if (precision > 0) {
    const std::u16string_view name = event.getLoggerName().view();
    out.append(name.substr(lengthBeforeLast(precision, name)));
  } else {
    out.appendChecked(event.getLoggerNameUtf8());
  }
}

inline void LOGPatternConverter::appendItem(I18NUtf8Buffer& out, LOGLoggingEvent& event, std::string_view message) {
  switch (letter) {
    case u'c':
      appendLoggerName(out, event);
      break;
    case u'd':
      if (date != nullptr) date->append(out, LOGDate(event.getTimeStamp(), event.getTimeStampNanos()));
      break;
    case u'n':
      out.appendChecked("\n");
      break;
    case u'%':
      out.appendChecked("%");
      break;
    case u'm':
      out.appendChecked(message);
      break;
    case u't':
      event.appendThreadName(out);
      break;
    case u'p':
      if (event.getLevel() != nullptr) out.append(event.getLevel()->toString());
      break;
    case u'x':
      out.append(event.getNDC());
      break;
    case u's':
      appendPlace(out, place, event.getSourceLocation());
      break;
    case u'X':
      appendFields(out, event, key);
      break;
    default:
      if (letter != 0) appendLocation(out, letter, *event.getLocationInformation());
  }
}

void LOGPatternConverter::fit(I18NUtf8Buffer& out, std::size_t start) const {
  // Most pieces are ASCII, where a byte is a unit and nothing has to be converted.
  const std::string_view piece = out.view().substr(start);
  std::size_t length = piece.size();
  if (!isAscii(piece)) {
    length = fitUtf16(out, start);
  } else if (length > maximumWidth) {
    out.erase(start, length - maximumWidth);
    length = maximumWidth;
  }
  if (length < minimumWidth) out.insertBlanks(leftAligned ? out.size() : start, minimumWidth - length);
}

// Widths count UTF-16 units, which for anything but ASCII are not bytes. Cuts the piece and returns its length in
// units.
std::size_t LOGPatternConverter::fitUtf16(I18NUtf8Buffer& out, std::size_t start) const {
  I18NString piece(out.view().substr(start));
  if (piece.length() > maximumWidth) {
    std::size_t excess = piece.length() - maximumWidth;
    if (maximumWidth > 0 && splitsPair(piece, excess)) ++excess;
    piece.erase(0, excess);
    out.erase(start, out.size() - start);
    out.append(piece);
  }
  return piece.length();
}
