#include "log4vrk/net/internal/LOGEventEncoder.h"

#include <algorithm>
#include <cstdio>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGEventFields.h"
#include "log4vrk/platform/internal/VRKTime.h"

namespace {

constexpr int USER_FACILITY = 1;
constexpr int LOWEST_SEVERITY = 7;
constexpr std::size_t LONGEST_HOST_NAME = 255;
constexpr std::size_t LONGEST_PROGRAM_NAME = 48;
// RFC 5424 has its sequence go from 1 to here and then again from 1.
constexpr std::uint64_t GREATEST_META_SEQUENCE = 2147483647;
// The element of our own. 32473 is the enterprise number that is set aside for examples; nobody else's data carry this
// name.
constexpr const char* ELEMENT = "[log4vrk@32473 ";
constexpr const char* FIELDS_ELEMENT = "[fields@32473";
// In bytes, so that a message has room beside its fields. A value takes twice its length when all of it is escaped.
constexpr std::size_t MOST_FIELDS = 16 * 1024;
constexpr std::size_t LONGEST_PARAMETER_NAME = 32;

// A header field: printable ASCII without blanks, and "-" for none.
std::string field(std::string_view text, std::size_t most) {
  std::string result(text.substr(0, most));
  for (char& c : result) {
    if (c <= ' ' || c > '~') c = '_';
  }
  return result.empty() ? "-" : result;
}

void appendValue(std::string& out, std::string_view name, std::string_view value) {
  const std::string_view kept = LOGEventEncoder::prefix(value, LOGEventEncoder::LONGEST_VALUE);
  out += ' ';
  out += name;
  out += "=\"";
  for (const char c : kept) {
    if (c == '"' || c == '\\' || c == ']') out += '\\';
    out += c;
  }
  if (kept.size() < value.size()) out += "...";
  out += '"';
}

void appendTime(std::string& out, const LOGLoggingEvent& event) {
  const std::tm time = VRKTime::utc(event.getTimeStamp());
  char text[80];
  const int length =
      std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%06dZ", time.tm_year + 1900, time.tm_mon + 1,
                    time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec, event.getTimeStampNanos() / 1000);
  out.append(text, static_cast<std::size_t>(length));
}

void appendLocation(std::string& out, const LOGLocationInfo& location) {
  appendValue(out, "class", location.getClassName().toUtf8());
  appendValue(out, "method", location.getMethodName().toUtf8());
  appendValue(out, "file", location.getFileName().toUtf8());
  appendValue(out, "line", location.getLineNumber().toUtf8());
}

// The name of a parameter: printable ASCII but for what ends it.
std::string parameterName(std::string_view name) {
  std::string result = field(name, LONGEST_PARAMETER_NAME);
  for (char& c : result) {
    if (c == '=' || c == ']' || c == '"') c = '_';
  }
  return result;
}

// Of the context and the event's own fields. Those for which there is no room are left out.
void appendFields(std::string& out, const LOGEventFields& fields) {
  if (fields.isEmpty()) return;
  out += FIELDS_ELEMENT;
  const std::size_t start = out.size();
  I18NUtf8Buffer value;
  const auto append = [&](const LOGFields::Field& each) {
    if (out.size() - start > MOST_FIELDS) return;
    value.clear();
    each.appendValue(value);
    appendValue(out, parameterName(each.name), value.view());
  };
  fields.eachOfContext(append);
  fields.eachOwn(append);
  out += ']';
}

}  // namespace

LOGEventEncoder::LOGEventEncoder(std::string_view hostName, std::string_view programName, long processId)
    : m_origin(" " + field(hostName, LONGEST_HOST_NAME) + " " + field(programName, LONGEST_PROGRAM_NAME) + " " +
               std::to_string(processId) + " - ") {}

LOGEncodedEvent LOGEventEncoder::encode(LOGLoggingEvent& event, std::string_view message, bool withLocation) const {
  if (!message.empty() && message.back() == '\n') message.remove_suffix(1);
  const LOGLevel* const level = event.getLevel();
  const int severity =
      level != nullptr ? std::clamp(level->getSyslogEquivalent(), 0, LOWEST_SEVERITY) : LOWEST_SEVERITY;
  LOGEncodedEvent result;
  std::string& text = result.text;
  text = "<" + std::to_string(USER_FACILITY * 8 + severity) + ">1 ";
  appendTime(text, event);
  text += m_origin;
  result.stampAt = text.size();
  appendValue(text, "logger", event.getLoggerName().toUtf8());
  appendValue(text, "thread", event.getThreadName().toUtf8());
  appendValue(text, "context", event.getNDC().toUtf8());
  if (withLocation) appendLocation(text, *event.getLocationInformation());
  text += ']';
  appendFields(text, LOGEventFields(event));
  text += ' ';
  const std::size_t space = LONGEST - LONGEST_STAMP - text.size();
  if (message.size() <= space) {
    text += message;
  } else {
    const std::string note = "... [cut: " + std::to_string(message.size()) + " bytes]";
    text += prefix(message, space - note.size());
    text += note;
  }
  return result;
}

void LOGEventEncoder::stamp(LOGEncodedEvent& event, const std::string& stream) {
  if (event.stampAt == 0) return;
  const std::uint64_t meta = (event.sequence - 1) % GREATEST_META_SEQUENCE + 1;
  const std::string stamp = "[meta sequenceId=\"" + std::to_string(meta) + "\"]" + ELEMENT + "stream=\"" + stream +
                            "\" sequence=\"" + std::to_string(event.sequence) + "\"";
  event.text.insert(event.stampAt, stamp);
  event.stampAt = 0;
}

std::string_view LOGEventEncoder::prefix(std::string_view utf8, std::size_t most) {
  if (utf8.size() <= most) return utf8;
  while (most > 0 && (static_cast<unsigned char>(utf8[most]) & 0xC0) == 0x80) --most;
  return utf8.substr(0, most);
}
