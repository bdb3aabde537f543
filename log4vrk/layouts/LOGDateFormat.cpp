#include "log4vrk/layouts/LOGDateFormat.h"

#include <ctime>
#include <string>
#include <vector>

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/platform/I18NLocale.h"

namespace {

constexpr std::int32_t MILLISECOND = 1000000;  // in nanoseconds

constexpr const char* MONTHS[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

constexpr struct {
  const char* name;
  const char* pattern;
} NAMED_FORMATS[] = {
    {"ABSOLUTE", "%H:%M:%S,%Q"},
    {"DATE", "%d %b %Y %H:%M:%S,%Q"},
    {"ISO8601", "%Y-%m-%d %H:%M:%S,%Q"},
};

// What stands before, between and after the %Q of a pattern. "%%Q" is a percent sign and a Q.
std::vector<std::string> splitAtMilliseconds(const std::string& pattern) {
  std::vector<std::string> parts(1);
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern.compare(i, 2, "%Q") == 0) {
      parts.emplace_back();
      ++i;
      continue;
    }
    parts.back() += pattern[i];
    if (pattern[i] == '%' && i + 1 < pattern.size()) parts.back() += pattern[++i];
  }
  return parts;
}

void putThreeDigits(std::string& text, std::size_t position, int value) {
  text[position] = static_cast<char>('0' + value / 100);
  text[position + 1] = static_cast<char>('0' + value / 10 % 10);
  text[position + 2] = static_cast<char>('0' + value % 10);
}

std::string strftimeText(const std::string& pattern, const std::tm& time) {
  // The blank in front keeps a text from being empty, which strftime cannot tell from a buffer that is too small.
  const std::string guarded = " " + pattern;
  for (std::string text(128, '\0'); text.size() <= 128 * 1024; text.resize(4 * text.size())) {
    const std::size_t length = std::strftime(text.data(), text.size(), guarded.c_str(), &time);
    if (length > 0) return text.substr(1, length - 1);
  }
  return std::string();
}

// A locale may write dates in bytes that are no UTF-8.
std::string wellFormed(const std::string& text) { return I18NString(std::string_view(text)).toUtf8(); }

class RelativeFormat : public LOGDateFormat {
 public:
  std::unique_ptr<LOGDateFormat> clone() const override { return std::make_unique<RelativeFormat>(*this); }
  using LOGDateFormat::append;
  void append(I18NUtf8Buffer& out, const LOGDate& date) override {
    const std::int64_t seconds = date.getSeconds() - LOGLoggingEvent::getStartTime();
    const std::int32_t nanoseconds = date.getNanoseconds() - LOGLoggingEvent::getStartTimeNanos();
    // A second is added and taken away, so that the division rounds down.
    out.append(static_cast<long long>(seconds * 1000 + (nanoseconds + 1000 * MILLISECOND) / MILLISECOND - 1000));
  }
};

class CalendarFormat : public LOGDateFormat {
 public:
  CalendarFormat(const std::string& pattern, bool named, const LOGTimeZone& zone)
      : m_parts(splitAtMilliseconds(pattern)), m_named(named), m_zone(zone) {}
  std::unique_ptr<LOGDateFormat> clone() const override { return std::make_unique<CalendarFormat>(*this); }

  using LOGDateFormat::append;
  void append(I18NUtf8Buffer& out, const LOGDate& date) override {
    if (!m_filled || date.getSeconds() != m_second) fill(date.getSeconds());
    const std::int32_t millisecond = date.getNanoseconds() / MILLISECOND;
    if (millisecond != m_millisecond) {
      for (const std::size_t position : m_positions) putThreeDigits(m_text, position, millisecond);
      m_millisecond = millisecond;
    }
    out.appendChecked(m_text);
  }

 private:
  void fill(std::int64_t second) {
    m_filled = false;  // until the whole text is that of the second
    const std::tm time = m_zone.at(second);
    m_text = wellFormed(textOf(m_parts.front(), time));
    m_positions.clear();
    for (std::size_t i = 1; i < m_parts.size(); ++i) {
      m_positions.push_back(m_text.size());
      m_text += "000" + wellFormed(textOf(m_parts[i], time));
    }
    m_second = second;
    m_millisecond = 0;
    m_filled = true;
  }

  std::string textOf(std::string part, const std::tm& time) const {
    const std::size_t month = m_named ? part.find("%b") : std::string::npos;
    if (month != std::string::npos) part.replace(month, 2, MONTHS[time.tm_mon]);
    return strftimeText(part, time);
  }

  const std::vector<std::string> m_parts;  // milliseconds stand between two
  const bool m_named;                      // months in English
  const LOGTimeZone m_zone;

  // The moment whose text is kept, and where its milliseconds stand.
  bool m_filled = false;
  std::int64_t m_second = 0;
  std::int32_t m_millisecond = 0;
  std::string m_text;
  std::vector<std::size_t> m_positions;
};

}  // namespace

LOGDateFormat::~LOGDateFormat() = default;

void LOGDateFormat::append(I18NString& out, const LOGDate& date) {
  I18NUtf8Buffer utf8;
  append(utf8, date);
  out.append(utf8.view());
}

std::unique_ptr<LOGDateFormat> LOGDateFormat::create(const I18NString& name, const LOGTimeZone& zone) {
  if (vrkEqualIgnoringCase(name, "NULL")) return nullptr;
  if (vrkEqualIgnoringCase(name, "RELATIVE")) return std::make_unique<RelativeFormat>();
  for (const auto& format : NAMED_FORMATS) {
    if (vrkEqualIgnoringCase(name, format.name)) return std::make_unique<CalendarFormat>(format.pattern, true, zone);
  }
  return std::make_unique<CalendarFormat>(name.toUtf8(), false, zone);
}
