#include "log4vrk/layouts/LOGJSONLayout.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

[[gnu::always_inline]] inline void put(I18NUtf8Buffer& out, std::string_view text) {
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
  const long long before = -(static_cast<long long>(second) * 1000000 + microsecond);
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

// A layout as one thread uses it. It keeps what will probably be the same in the next line: the text of a second; what
// follows from level, logger and thread; and the places of the statements that the thread has come by.
class LOGJSONCopy {
 public:
  bool isOf(std::uint64_t number) const { return m_number == number; }
  [[gnu::cold]] void take(std::uint64_t number, std::shared_ptr<const LOGJSONForm> form);
  /// Appends a line without its end. `whole` says how much of it counts should an error end it early.
  void write(I18NUtf8Buffer& out, std::size_t& whole, LOGLoggingEvent& event, std::string_view message,
             LOGThreadState& thread);

 private:
  /// Some parts in a row that level, logger and thread decide, or one other part.
  struct Step {
    std::vector<LOGJSONPart> steady;
    LOGJSONPart other;
    std::string text;  // of the steady ones; of others what stands before the value
  };
  struct Place {
    const LOGSourceLocation* place = nullptr;
    std::string text;
  };

  static bool isSteady(LOGJSONPart part) {
    return part == LOGJSON_LEVEL || part == LOGJSON_LOGGER || part == LOGJSON_THREAD || part == LOGJSON_PROCESS ||
           part == LOGJSON_VERSION;
  }
  bool isSteadyFor(LOGLoggingEvent& event, LOGThreadState& thread);
  [[gnu::cold]] void makeSteady(LOGLoggingEvent& event, LOGThreadState& thread);
  void writeSteady(I18NUtf8Buffer& out, LOGJSONPart part, LOGLoggingEvent& event) const;
  void writeOther(I18NUtf8Buffer& out, const Step& step, LOGLoggingEvent& event, std::string_view message);
  void key(I18NUtf8Buffer& out, LOGJSONPart part) const { put(out, m_form->keys[part]); }
  void writeTime(I18NUtf8Buffer& out, const LOGLoggingEvent& event);
  [[gnu::cold]] void takeSecond(std::int64_t second);
  const std::string& textOf(const LOGSourceLocation& place);
  void writePlace(I18NUtf8Buffer& out, const LOGSourceLocation& place) const;
  void writeContext(I18NUtf8Buffer& out, const LOGEventFields& fields) const;
  void writeFields(I18NUtf8Buffer& out, const LOGEventFields& fields) const;
  void writeError(I18NUtf8Buffer& out, const I18NString& error) const;

  std::uint64_t m_number = 0;  // none
  std::shared_ptr<const LOGJSONForm> m_form;
  std::vector<Step> m_steps;
  // What the steady texts are for.
  bool m_hasSteady = false;
  const I18NString* m_levelName = nullptr;  // such names are never freed
  int m_rank = 0;
  std::string m_logger;
  bool m_isOwnThread = false;
  I18NString m_threadName;  // of another thread than the one that writes
  // The text of a second, with six digits at a position, and what stands before it.
  bool m_hasSecond = false;
  std::int64_t m_second = 0;
  std::string m_time;
  std::size_t m_digitsAt = 0;
  std::array<Place, 16> m_places;  // where each is follows from its address
};

// Those that a thread has used last. Their places are those of LOGPatternCopies.
struct LOGJSONCopies : std::array<LOGJSONCopy, 8> {};

void LOGJSONCopy::take(std::uint64_t number, std::shared_ptr<const LOGJSONForm> form) {
  m_number = 0;  // until it is whole
  m_form = std::move(form);
  m_hasSteady = m_hasSecond = false;
  m_places = {};
  m_steps.clear();
  for (const LOGJSONPart part : m_form->order) {
    if (!isSteady(part)) {
      m_steps.push_back({{}, part, m_form->keys[part] + (part == LOGJSON_MESSAGE ? "\"" : "")});
    } else if (!m_steps.empty() && !m_steps.back().steady.empty()) {
      m_steps.back().steady.push_back(part);
    } else {
      m_steps.push_back({{part}, part, {}});
    }
  }
  m_number = number;
}

inline void LOGJSONCopy::write(I18NUtf8Buffer& out, std::size_t& whole, LOGLoggingEvent& event,
                               std::string_view message, LOGThreadState& thread) {
  if (!isSteadyFor(event, thread)) makeSteady(event, thread);
  for (const Step& step : m_steps) {
    step.steady.empty() ? writeOther(out, step, event, message) : put(out, step.text);
    whole = out.size();
  }
}

inline bool LOGJSONCopy::isSteadyFor(LOGLoggingEvent& event, LOGThreadState& thread) {
  const LOGLevel* const level = event.getLevel();
  const std::string& logger = event.getLoggerNameUtf8();
  if (!m_hasSteady || level == nullptr || &level->toString() != m_levelName || level->toInt() != m_rank) return false;
  if (logger.size() != m_logger.size() || std::memcmp(logger.data(), m_logger.data(), logger.size()) != 0) return false;
  const I18NString& name = event.getThreadName();
  return thread.name.owns(name) == m_isOwnThread && (m_isOwnThread || name == m_threadName);
}

void LOGJSONCopy::makeSteady(LOGLoggingEvent& event, LOGThreadState& thread) {
  m_hasSteady = false;
  const LOGLevel* const level = event.getLevel();
  m_levelName = level != nullptr ? &level->toString() : nullptr;
  m_rank = level != nullptr ? level->toInt() : 0;
  m_logger = event.getLoggerNameUtf8();
  m_isOwnThread = thread.name.owns(event.getThreadName());
  if (!m_isOwnThread) m_threadName = event.getThreadName();
  I18NUtf8Buffer text;
  for (Step& step : m_steps) {
    if (step.steady.empty()) continue;
    text.clear();
    for (const LOGJSONPart part : step.steady) writeSteady(text, part, event);
    step.text = text.view();
  }
  m_hasSteady = true;
}

void LOGJSONCopy::writeSteady(I18NUtf8Buffer& out, LOGJSONPart part, LOGLoggingEvent& event) const {
  const LOGLevel* const level = event.getLevel();
  if (part == LOGJSON_LEVEL && level == nullptr) return;
  key(out, part);
  if (part == LOGJSON_LEVEL) {
    const bool isSeverity = m_form->settings.preset == LOGJSONSettings::GCP;
    putText(out, isSeverity ? severityOf(level->toInt()) : level->toString().toUtf8());
  } else if (part == LOGJSON_LOGGER) {
    putText(out, m_logger);
  } else if (part == LOGJSON_THREAD) {
    putAppended(out, [&](I18NUtf8Buffer& to) { event.appendThreadName(to); });
  } else if (part == LOGJSON_PROCESS) {
    out.append(static_cast<long long>(VRKProcess::id()));
  } else {
    put(out, SCHEMA);
  }
}

inline void LOGJSONCopy::writeOther(I18NUtf8Buffer& out, const Step& step, LOGLoggingEvent& event,
                                    std::string_view message) {
  switch (step.other) {
    case LOGJSON_TIME:
      return writeTime(out, event);
    case LOGJSON_MESSAGE:
      put(out, step.text);
      LOGEscape::appendJson(out, message);
      return put(out, "\"");
    case LOGJSON_NESTED:
      if (event.getNDC().isEmpty()) return;
      put(out, step.text);
      return putAppended(out, [&](I18NUtf8Buffer& to) { to.append(event.getNDC()); });
    case LOGJSON_CONTEXT:
    case LOGJSON_FIELDS:
      if (const LOGEventFields fields(event); !fields.isEmpty()) {
        step.other == LOGJSON_CONTEXT ? writeContext(out, fields) : writeFields(out, fields);
      }
      return;
    case LOGJSON_PLACE:
      if (event.getSourceLocation() != nullptr) put(out, textOf(*event.getSourceLocation()));
      return;
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
  const LOGJSONSettings::TimeFormat format = m_form->settings.timeFormat;
  if (format == LOGJSONSettings::MILLIS || (format == LOGJSONSettings::EPOCH && second < 0)) {
    key(out, LOGJSON_TIME);
    if (format == LOGJSONSettings::EPOCH) return putEarly(out, second, microsecond);
    const long long milliseconds = second * 1000 + microsecond / 1000;
    return out.append(milliseconds);
  }
  if (!m_hasSecond || m_second != second) takeSecond(second);
  putDigits(m_time.data() + m_digitsAt, microsecond, 6);
  put(out, m_time);
}

void LOGJSONCopy::takeSecond(std::int64_t second) {
  m_hasSecond = false;
  m_time = m_form->keys[LOGJSON_TIME];
  char text[80];
  if (m_form->settings.timeFormat == LOGJSONSettings::EPOCH) {
    std::snprintf(text, sizeof text, "%lld.000000", static_cast<long long>(second));
    m_time += text;
    m_digitsAt = m_time.size() - 6;
  } else {
    const std::tm time = m_form->isUtc() ? VRKTime::utc(second) : m_form->settings.zone.at(second);
    std::snprintf(text, sizeof text, "\"%04d-%02d-%02dT%02d:%02d:%02d.000000", time.tm_year + 1900, time.tm_mon + 1,
                  time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
    m_time += text;
    m_digitsAt = m_time.size() - 6;
    const long minutes = std::labs(time.tm_gmtoff / 60);
    std::snprintf(text, sizeof text, "%c%02ld:%02ld\"", time.tm_gmtoff < 0 ? '-' : '+', minutes / 60, minutes % 60);
    m_time += minutes == 0 ? "Z\"" : text;
  }
  m_second = second;
  m_hasSecond = true;
}

// A place is a constant of the program, which stays.
inline const std::string& LOGJSONCopy::textOf(const LOGSourceLocation& place) {
  Place& kept = m_places[reinterpret_cast<std::uintptr_t>(&place) / sizeof place % m_places.size()];
  if (kept.place == &place) return kept.text;
  kept.place = nullptr;
  I18NUtf8Buffer text;
  writePlace(text, place);
  kept.text = text.view();
  kept.place = &place;
  return kept.text;
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
  logContain(FAILURES, [&] { copy.write(line, whole, event, message, thread); });
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
