#include "log4vrk/layouts/internal/LOGDateFormat.h"

#include <ctime>
#include <string>
#include <utility>
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

// What stands before, between and after the %Q of a pattern. A percent sign is taken together with what follows it, so
// that "%%Q" stays a percent sign and a Q.
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

// Empty when the text exceeds the limit that LOGDateFormat::append() states.
std::string strftimeText(const std::string& pattern, const std::tm& time) {
  // The blank in front keeps the text from being empty: strftime returns 0 for an empty text as it does for a buffer
  // that is too small.
  const std::string guarded = " " + pattern;
  for (std::string text(128, '\0'); text.size() <= 128 * 1024; text.resize(4 * text.size())) {
    const std::size_t length = std::strftime(text.data(), text.size(), guarded.c_str(), &time);
    if (length > 0) return text.substr(1, length - 1);
  }
  return std::string();
}

// A locale may write dates in bytes that are no UTF-8. Decoding them once a second spares a check of every line.
std::string wellFormed(const std::string& text) { return I18NString(std::string_view(text)).toUtf8(); }

class RelativeFormat : public LOGDateFormat {
 public:
  std::unique_ptr<LOGDateFormat> clone() const override { return std::make_unique<RelativeFormat>(*this); }
  using LOGDateFormat::append;
  void append(I18NUtf8Buffer& out, const LOGDate& date) override {
    const std::int64_t seconds = date.getSeconds() - LOGLoggingEvent::getStartTime();
    const std::int32_t nanoseconds = date.getNanoseconds() - LOGLoggingEvent::getStartTimeNanos();
    // The nanoseconds may be negative by less than a second, and division rounds towards zero. So a second is added
    // before it and taken away after it.
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
    keep(date.getSeconds());
    m_text.show(date.getNanoseconds() / MILLISECOND);
    out.appendChecked(m_text.text);
  }

  const LOGSecondText* textOf(std::int64_t second) override {
    keep(second);
    m_text.show(0);  // the caller keeps a copy, whose count begins at 0
    return &m_text;
  }

 private:
  void keep(std::int64_t second) {
    if (m_filled && second == m_second) return;
    m_filled = false;  // if anything below raises, the old text must not pass for this second's
    const std::tm time = m_zone.at(second);
    LOGSecondText made;
    made.text = wellFormed(partOf(m_parts.front(), time));
    for (std::size_t i = 1; i < m_parts.size(); ++i) {
      made.positions.push_back(made.text.size());
      made.text += "000" + wellFormed(partOf(m_parts[i], time));
    }
    m_text = std::move(made);
    m_second = second;
    m_filled = true;
  }

  // strftime's %b follows the locale; the named formats are English everywhere.
  std::string partOf(std::string part, const std::tm& time) const {
    const std::size_t month = m_named ? part.find("%b") : std::string::npos;
    if (month != std::string::npos) part.replace(month, 2, MONTHS[time.tm_mon]);
    return strftimeText(part, time);
  }

  const std::vector<std::string> m_parts;  // of the pattern; between two of them stand milliseconds
  const bool m_named;                      // one of NAMED_FORMATS, whose months are English
  const LOGTimeZone m_zone;

  // The second whose text is kept.
  bool m_filled = false;
  std::int64_t m_second = 0;
  LOGSecondText m_text;
};

}  // namespace

void LOGSecondText::write(std::int32_t newMillisecond) {
  millisecond = newMillisecond;
  for (const std::size_t position : positions) {
    text[position] = static_cast<char>('0' + millisecond / 100);
    text[position + 1] = static_cast<char>('0' + millisecond / 10 % 10);
    text[position + 2] = static_cast<char>('0' + millisecond % 10);
  }
}

LOGDateFormat::~LOGDateFormat() = default;

const LOGSecondText* LOGDateFormat::textOf(std::int64_t) { return nullptr; }

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
