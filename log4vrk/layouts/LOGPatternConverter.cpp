#include "log4vrk/layouts/LOGPatternConverter.h"

#include <string_view>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLoggingEvent.h"

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

void appendLocation(I18NString& out, char16_t letter, const LOGLocationInfo& location) {
  switch (letter) {
    case u'C':
      out += location.getClassName();
      break;
    case u'F':
      out += location.getFileName();
      break;
    case u'L':
      out += location.getLineNumber();
      break;
    case u'M':
      out += location.getMethodName();
      break;
    case u'l':
      out += location.getClassName();
      out += '.';
      out += location.getMethodName();
      out += '(';
      out += location.getFileName();
      out += ':';
      out += location.getLineNumber();
      out += ')';
      break;
    default:
      break;
  }
}

bool splitsPair(const I18NString& text, std::size_t position) {
  return (text[position - 1] & 0xFC00) == 0xD800 && (text[position] & 0xFC00) == 0xDC00;
}

}  // namespace

void LOGPatternConverter::append(I18NString& out, LOGLoggingEvent& event, const I18NString* message) {
  const std::size_t start = out.length();
  switch (letter) {
    case 0:
      out += text;
      break;
    case u'c':
      out += event.getLoggerName();
      if (precision > 0) out.erase(start, lengthBeforeLast(precision, event.getLoggerName().view()));
      break;
    case u'd':
      if (date != nullptr) date->append(out, LOGDate(event.getTimeStamp(), event.getTimeStampNanos()));
      break;
    case u'm':
      if (message != nullptr) out += *message;
      break;
    case u'p':
      if (event.getLevel() != nullptr) out += event.getLevel()->toString();
      break;
    case u't':
      out += event.getThreadName();
      break;
    case u'x':
      out += event.getNDC();
      break;
    default:
      appendLocation(out, letter, *event.getLocationInformation());
  }
  if (minimumWidth > 0 || maximumWidth != I18NString::npos) fit(out, start);
}

void LOGPatternConverter::fit(I18NString& out, std::size_t start) const {
  std::size_t length = out.length() - start;
  if (length > maximumWidth) {
    std::size_t excess = length - maximumWidth;
    if (maximumWidth > 0 && splitsPair(out, start + excess)) ++excess;
    out.erase(start, excess);
    length -= excess;
  }
  if (length < minimumWidth) out.insert(leftAligned ? out.length() : start, minimumWidth - length, u' ');
}
