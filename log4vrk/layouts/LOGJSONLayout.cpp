#include "log4vrk/layouts/LOGJSONLayout.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGSourceLocation.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGEventFields.h"
#include "log4vrk/core/internal/LOGLayoutInternals.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/layouts/internal/LOGEscape.h"
#include "log4vrk/layouts/internal/LOGJSONForm.h"
#include "log4vrk/platform/internal/VRKProcess.h"
#include "log4vrk/platform/internal/VRKTime.h"

namespace {

std::atomic<std::uint64_t> g_numbers{0};

constexpr LOGFailureTexts FAILURES = {"LOGJSONLayout::format -- some i18nstring exception occurred",
                                      "LOGJSONLayout::format -- some VRKThrowable exception occurred",
                                      "LOGJSONLayout::format -- some generic error occurred"};

constexpr std::string_view SCHEMA = "\"8.11.0\"";

inline void put(I18NUtf8Buffer& out, std::string_view text) {
  out.extendTo(I18NUtf8Buffer::copy(out.room(text.size()), text));
}

// A text in quotes.
inline void putText(I18NUtf8Buffer& out, std::string_view utf8) {
  put(out, "\"");
  LOGEscape::appendJson(out, utf8);
  put(out, "\"");
}

// The same of a text that somebody appends.
template <typename Append>
void putAppended(I18NUtf8Buffer& out, Append append) {
  put(out, "\"");
  const std::size_t start = out.size();
  append(out);
  LOGEscape::makeJson(out, start);
  put(out, "\"");
}

void putValue(I18NUtf8Buffer& out, const LOGFields::Field& field) {
  if (field.type == LOGFields::TEXT) return putText(out, field.value);
  if (field.type == LOGFields::FLOATING && !std::isfinite(field.floating())) return put(out, "null");
  field.appendValue(out);
}

void putDigits(char* at, std::int32_t value, int count) {
  for (; count > 0; value /= 10) at[--count] = static_cast<char>('0' + value % 10);
}

// Seconds before 1970 as a decimal number, whose fraction counts the other way.
[[gnu::cold]] void putEarly(I18NUtf8Buffer& out, std::int64_t second, std::int32_t microsecond) {
  const auto before = static_cast<long long>(-(second * 1000000 + microsecond));
  char text[32];
  const int size = std::snprintf(text, sizeof text, "-%lld.%06lld", before / 1000000, before % 1000000);
  put(out, {text, static_cast<std::size_t>(size)});
}

const char* severityOf(int rank) {
  if (rank < LOGLevel::INFO_RANK) return "DEBUG";
  if (rank < LOGLevel::WARN_RANK) return "INFO";
  if (rank < LOGLevel::ERROR_RANK) return "WARNING";
  return rank < LOGLevel::FATAL_RANK ? "ERROR" : "CRITICAL";
}

}  // namespace

// A layout as one thread uses it, with what will probably be the same in the next line. See LOGPatternCopy.
class LOGJSONCopy {
 public:
  bool isOf(std::uint64_t number) const { return m_number == number; }
  void take(std::uint64_t number, std::shared_ptr<const LOGJSONForm> form);
  /// Appends a line without its end. `whole` says how much of it counts should an error end it early.
  void write(I18NUtf8Buffer& out, std::size_t& whole, LOGLoggingEvent& event, std::string_view message);

 private:
  void writePart(I18NUtf8Buffer& out, LOGJSONPart part, LOGLoggingEvent& event, std::string_view message);
  void key(I18NUtf8Buffer& out, LOGJSONPart part) const { put(out, m_form->keys[part]); }
  void writeTime(I18NUtf8Buffer& out, const LOGLoggingEvent& event);
  [[gnu::cold]] void takeSecond(std::int64_t second);
  void writeLevel(I18NUtf8Buffer& out, const LOGLevel* level);
  void writePlace(I18NUtf8Buffer& out, const LOGSourceLocation& place) const;
  void writeContext(I18NUtf8Buffer& out, const LOGEventFields& fields) const;
  void writeFields(I18NUtf8Buffer& out, const LOGEventFields& fields) const;
  void writeError(I18NUtf8Buffer& out, const I18NString& error) const;

  std::uint64_t m_number = 0;  // none
  std::shared_ptr<const LOGJSONForm> m_form;
  std::string m_process;
  const I18NString* m_levelName = nullptr;  // such names are never freed
  int m_rank = 0;
  std::string m_level;
  // The text of a second, with six digits at a position.
  bool m_filled = false;
  std::int64_t m_second = 0;
  char m_time[64] = {};
  std::size_t m_timeSize = 0, m_digitsAt = 0;
};

// Those that a thread has used last. Their places are those of LOGPatternCopies.
struct LOGJSONCopies : std::array<LOGJSONCopy, 8> {};

void LOGJSONCopy::take(std::uint64_t number, std::shared_ptr<const LOGJSONForm> form) {
  m_number = 0;  // until it is whole
  m_form = std::move(form);
  m_process = std::to_string(VRKProcess::id());
  m_levelName = nullptr;
  m_filled = false;
  m_number = number;
}

inline void LOGJSONCopy::write(I18NUtf8Buffer& out, std::size_t& whole, LOGLoggingEvent& event,
                               std::string_view message) {
  for (const LOGJSONPart part : m_form->order) {
    writePart(out, part, event, message);
    whole = out.size();
  }
}

inline void LOGJSONCopy::writePart(I18NUtf8Buffer& out, LOGJSONPart part, LOGLoggingEvent& event,
                                   std::string_view message) {
  switch (part) {
    case LOGJSON_TIME:
      key(out, part);
      return writeTime(out, event);
    case LOGJSON_LEVEL:
      if (event.getLevel() == nullptr) return;
      key(out, part);
      return writeLevel(out, event.getLevel());
    case LOGJSON_LOGGER:
      key(out, part);
      return putText(out, event.getLoggerNameUtf8());
    case LOGJSON_THREAD:
      key(out, part);
      return putAppended(out, [&](I18NUtf8Buffer& to) { event.appendThreadName(to); });
    case LOGJSON_PROCESS:
      key(out, part);
      return put(out, m_process);
    case LOGJSON_MESSAGE:
      key(out, part);
      return putText(out, message);
    case LOGJSON_NESTED:
      if (event.getNDC().isEmpty()) return;
      key(out, part);
      return putAppended(out, [&](I18NUtf8Buffer& to) { to.append(event.getNDC()); });
    case LOGJSON_CONTEXT:
    case LOGJSON_FIELDS:
      if (const LOGEventFields fields(event); !fields.isEmpty()) {
        part == LOGJSON_CONTEXT ? writeContext(out, fields) : writeFields(out, fields);
      }
      return;
    case LOGJSON_PLACE:
      if (event.getSourceLocation() != nullptr) writePlace(out, *event.getSourceLocation());
      return;
    case LOGJSON_VERSION:
      key(out, part);
      return put(out, SCHEMA);
    case LOGJSON_ERROR:
      if (!event.getThrowableStrRep().isEmpty()) writeError(out, event.getThrowableStrRep());
      return;
    default:
      return;
  }
}

inline void LOGJSONCopy::writeTime(I18NUtf8Buffer& out, const LOGLoggingEvent& event) {
  const std::int64_t second = event.getTimeStamp();
  const std::int32_t microsecond = event.getTimeStampNanos() / 1000;
  if (m_form->settings.timeFormat == LOGJSONSettings::MILLIS) {
    return out.append(static_cast<long long>(second * 1000 + microsecond / 1000));
  }
  if (m_form->settings.timeFormat == LOGJSONSettings::EPOCH && second < 0) return putEarly(out, second, microsecond);
  if (!m_filled || m_second != second) takeSecond(second);
  putDigits(m_time + m_digitsAt, microsecond, 6);
  put(out, {m_time, m_timeSize});
}

void LOGJSONCopy::takeSecond(std::int64_t second) {
  m_filled = false;
  int written = 0;
  if (m_form->settings.timeFormat == LOGJSONSettings::EPOCH) {
    written = std::snprintf(m_time, sizeof m_time, "%lld.000000", static_cast<long long>(second));
    m_digitsAt = static_cast<std::size_t>(written) - 6;
  } else {
    const std::tm time = m_form->isUtc() ? VRKTime::utc(second) : m_form->settings.zone.at(second);
    written = std::snprintf(m_time, sizeof m_time, "\"%04d-%02d-%02dT%02d:%02d:%02d.000000", time.tm_year + 1900,
                            time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
    m_digitsAt = static_cast<std::size_t>(written) - 6;
    char* const zone = m_time + written;
    const std::size_t left = sizeof m_time - static_cast<std::size_t>(written);
    const long minutes = std::labs(time.tm_gmtoff / 60);
    written += minutes == 0 ? std::snprintf(zone, left, "Z\"")
                            : std::snprintf(zone, left, "%c%02ld:%02ld\"", time.tm_gmtoff < 0 ? '-' : '+', minutes / 60,
                                            minutes % 60);
  }
  m_timeSize = static_cast<std::size_t>(written);
  m_second = second;
  m_filled = true;
}

inline void LOGJSONCopy::writeLevel(I18NUtf8Buffer& out, const LOGLevel* level) {
  const I18NString* const name = &level->toString();
  if (name != m_levelName || level->toInt() != m_rank) {
    m_levelName = nullptr;
    I18NUtf8Buffer text;
    putText(text, m_form->settings.preset == LOGJSONSettings::GCP ? severityOf(level->toInt()) : name->toUtf8());
    m_level = text.view();
    m_rank = level->toInt();
    m_levelName = name;
  }
  put(out, m_level);
}

void LOGJSONCopy::writePlace(I18NUtf8Buffer& out, const LOGSourceLocation& place) const {
  const std::string_view path = place.file, file = path.substr(path.rfind('/') + 1);
  const bool isObject = !m_form->keys[LOGJSON_PLACE].empty();
  if (isObject) key(out, LOGJSON_PLACE);
  isObject ? put(out, "{\"file\":") : key(out, LOGJSON_FILE);
  putAppended(out, [&](I18NUtf8Buffer& to) { to.append(file); });
  isObject ? put(out, ",\"line\":\"") : key(out, LOGJSON_LINE);
  out.append(static_cast<long long>(place.line));
  isObject ? put(out, "\",\"function\":") : key(out, LOGJSON_FUNCTION);
  putAppended(out, [&](I18NUtf8Buffer& to) { to.append(std::string_view(place.function)); });
  if (isObject) put(out, "}");
}

// Labels are texts, whatever the value was.
void LOGJSONCopy::writeContext(I18NUtf8Buffer& out, const LOGEventFields& fields) const {
  const bool isTyped = m_form->settings.preset == LOGJSONSettings::PLAIN;
  bool isFirst = true;
  fields.eachOfContext([&](const LOGFields::Field& field) {
    if (isFirst) key(out, LOGJSON_CONTEXT);
    put(out, isFirst ? "{" : ",");
    isFirst = false;
    putText(out, field.name);
    put(out, ":");
    isTyped ? putValue(out, field) : putAppended(out, [&](I18NUtf8Buffer& to) { field.appendValue(to); });
  });
  if (!isFirst) put(out, "}");
}

void LOGJSONCopy::writeFields(I18NUtf8Buffer& out, const LOGEventFields& fields) const {
  fields.eachOwn([&](const LOGFields::Field& field) {
    put(out, ",\"");
    for (std::size_t count = m_form->underscoresFor(field.name); count > 0; --count) put(out, "_");
    LOGEscape::appendJson(out, field.name);
    put(out, "\":");
    putValue(out, field);
  });
}

void LOGJSONCopy::writeError(I18NUtf8Buffer& out, const I18NString& error) const {
  if (!m_form->keys[LOGJSON_SUMMARY].empty()) {
    key(out, LOGJSON_SUMMARY);
    const std::u16string_view text = error.view();
    putAppended(out, [&](I18NUtf8Buffer& to) { to.append(text.substr(0, text.find_first_of(u"\r\n"))); });
  }
  key(out, LOGJSON_ERROR);
  putAppended(out, [&](I18NUtf8Buffer& to) { to.append(error); });
}

namespace {

// Every part begins with a comma. That of the first one becomes the brace.
std::string_view build(LOGThreadState& thread, LOGJSONCopy& copy, LOGLoggingEvent& event, std::string_view message) {
  I18NUtf8Buffer& line = thread.texts.line;
  line.limitMemory(LOGLayoutInternals::MOST_KEPT);
  line.clear();
  std::size_t whole = 0;
  logContain(FAILURES, [&] { copy.write(line, whole, event, message); });
  line.cutTo(whole);
  logContain(FAILURES, [&] {
    if (whole == 0) put(line, ",");
    put(line, "}\n");
    *(line.room(0) - line.size()) = '{';
    whole = line.size();
  });
  line.cutTo(whole);
  return line.view();
}

}  // namespace

const LOGLayoutInternals LOGJSONLayout::INTERNALS = {
    &typeid(LOGJSONLayout),
    [](LOGLayout& layout, LOGLoggingEvent* event) { return static_cast<LOGJSONLayout&>(layout).buildAny(event); },
    &LOGJSONLayout::formatFast,
};

LOGJSONLayout::LOGJSONLayout() : LOGJSONLayout("plain") {}

LOGJSONLayout::LOGJSONLayout(const I18NString& preset) : m_settings(std::make_unique<LOGJSONSettings>()) {
  instance("LOGJSONLayout");
  LOGLayoutInternals::set(*this, INTERNALS);
  setPreset(preset);
}

LOGJSONLayout::~LOGJSONLayout() = default;

template <typename Change>
void LOGJSONLayout::change(Change change) {
  const LOGGuard guard(*this);
  change(*m_settings);
  m_form = std::make_shared<LOGJSONForm>(*m_settings);
  m_number.store(++g_numbers, std::memory_order_release);
}

void LOGJSONLayout::setPreset(const I18NString& preset) {
  change([&](LOGJSONSettings& settings) { settings.setPreset(preset); });
}

void LOGJSONLayout::setTimeFormat(const I18NString& format) {
  change([&](LOGJSONSettings& settings) { settings.setTimeFormat(format); });
}

void LOGJSONLayout::setTimeZone(const I18NString& zone) {
  change([zone = LOGTimeZone(zone)](LOGJSONSettings& settings) {
    settings.zone = zone;
    settings.hasZone = true;
  });
}

void LOGJSONLayout::setFields(const I18NString& parts) {
  change([&](LOGJSONSettings& settings) { settings.setParts(parts); });
}

void LOGJSONLayout::setNames(const I18NString& names) {
  change([&](LOGJSONSettings& settings) { settings.setNames(names); });
}

I18NString& LOGJSONLayout::format(LOGLoggingEvent* event) {
  I18NString text = takeSpare();
  text.append(buildAny(event));
  return setResult(std::move(text));
}

I18NString& LOGJSONLayout::getContentType() { return setResult("application/json"); }

int LOGJSONLayout::ignoresThrowable() { return 0; }

LOGJSONCopy& LOGJSONLayout::copyOf(LOGThreadState& thread) {
  const std::uint64_t number = m_number.load(std::memory_order_acquire);
  if (!thread.jsons) thread.jsons = std::make_shared<LOGJSONCopies>();
  LOGJSONCopy& copy = (*thread.jsons)[number % thread.jsons->size()];
  if (copy.isOf(number)) return copy;
  const LOGGuard guard(*this);
  const std::uint64_t current = m_number.load(std::memory_order_relaxed);
  LOGJSONCopy& taken = (*thread.jsons)[current % thread.jsons->size()];
  taken.take(current, m_form);
  return taken;
}

// The message is rendered first: that may run application code, which may log by this layout, too.
std::string_view LOGJSONLayout::buildAny(LOGLoggingEvent* event) {
  if (event == nullptr) {
    LOGLogLog::error("LOGJSONLayout::format --- Event is NULL.");
    return {};
  }
  LOGThreadState& thread = LOGThreadState::current();
  thread.texts.message.limitMemory(LOGLayoutInternals::MOST_KEPT);
  std::string_view message;
  LOGJSONCopy* copy = nullptr;
  logContain(FAILURES, [&] { message = event->renderUtf8(thread.texts.message); });
  logContain(FAILURES, [&] { copy = &copyOf(thread); });
  return copy != nullptr ? build(thread, *copy, *event, message) : std::string_view();
}

std::string_view LOGJSONLayout::formatFast(LOGLayout& layout, LOGLoggingEvent& event) {
  LOGThreadState& thread = LOGThreadState::current();
  LOGJSONCopy& copy = static_cast<LOGJSONLayout&>(layout).copyOf(thread);
  return build(thread, copy, event, event.isRenderable() ? event.getText() : std::string_view());
}
