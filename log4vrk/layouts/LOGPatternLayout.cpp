#include "log4vrk/layouts/LOGPatternLayout.h"

#include <algorithm>
#include <array>
#include <typeinfo>
#include <utility>

#include "log4vrk/core/LOGContainment.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGThreadState.h"
#include "log4vrk/layouts/LOGPatternConverter.h"
#include "log4vrk/layouts/LOGPatternParser.h"

namespace {

// In bytes. A larger line gives its memory back once it has been used.
constexpr std::size_t MOST_KEPT = 32 * 1024;

std::atomic<std::uint64_t> g_numbers{0};

constexpr LOGFailureTexts FAILURES = {"LOGPatternLayout::format -- some i18nstring exception occurred",
                                      "LOGPatternLayout::format -- some VRKThrowable exception occurred",
                                      "LOGPatternLayout::format -- some generic error occurred"};

}  // namespace

// A pattern as one thread uses it: with dates and levels as the thread has written them last, and without a lock.
struct LOGPatternCopy {
  std::uint64_t number = 0;  // none
  bool hasMessage = false;
  std::vector<LOGPatternConverter> converters;
};

// Those that a thread has used last, each at the place that follows from its number.
struct LOGPatternCopies : std::array<LOGPatternCopy, 16> {};

LOGPatternLayout::LOGPatternLayout() : LOGPatternLayout("%r [%t] %p %c %x - %m%n") {}

LOGPatternLayout::LOGPatternLayout(const I18NString& pattern) {
  instance("LOGPatternLayout");
  setConversionPattern(pattern);
}

LOGPatternLayout::~LOGPatternLayout() = default;

void LOGPatternLayout::setConversionPattern(const I18NString& pattern) {
  std::vector<LOGPatternConverter> converters = LOGPatternParser(pattern).parse();
  I18NString copy = pattern;
  const LOGGuard guard(*this);
  m_pattern = std::move(copy);
  m_converters.swap(converters);
  m_number.store(++g_numbers, std::memory_order_release);
}

I18NString LOGPatternLayout::getConversionPattern() {
  const LOGGuard guard(*this);
  return m_pattern;
}

I18NString& LOGPatternLayout::format(LOGLoggingEvent* event) {
  I18NString text = takeSpare();
  text.append(buildAny(event));
  return setResult(std::move(text));
}

std::string_view LOGPatternLayout::formatUtf8(LOGLoggingEvent* event) {
  if (typeid(*this) != typeid(LOGPatternLayout))
    return LOGLayout::formatUtf8(event);  // it may have a format() of its own
  return buildAny(event);
}

LOGPatternCopy& LOGPatternLayout::copyOf(LOGThreadState& thread) {
  if (!thread.patterns) thread.patterns = std::make_shared<LOGPatternCopies>();
  const std::uint64_t number = m_number.load(std::memory_order_acquire);
  LOGPatternCopy& copy = (*thread.patterns)[number % thread.patterns->size()];
  if (copy.number == number) return copy;

  const LOGGuard guard(*this);
  if (number != m_number.load(std::memory_order_relaxed)) return copyOf(thread);
  copy.number = 0;  // until it is whole
  copy.converters = std::vector<LOGPatternConverter>(m_converters);
  copy.hasMessage = std::any_of(m_converters.begin(), m_converters.end(),
                                [](const LOGPatternConverter& converter) { return converter.letter == u'm'; });
  copy.number = number;
  return copy;
}

std::string_view LOGPatternLayout::buildAny(LOGLoggingEvent* event) {
  if (event == nullptr) {
    LOGLogLog::error("LOGPatternLayout::format --- Event is NULL.");
    return {};
  }
  LOGThreadState& thread = LOGThreadState::current();
  // First, because it may run application code, and that may even format, and set another pattern.
  LOGLoggingEvent::Rendered message;
  LOGPatternCopy* copy = nullptr;
  logContain(FAILURES, [&] {
    if (copyOf(thread).hasMessage) message = event->render();
  });
  logContain(FAILURES, [&] { copy = &copyOf(thread); });
  return copy != nullptr ? build(thread, *copy, *event, message) : std::string_view();
}

bool LOGPatternLayout::formatPlain(LOGLoggingEvent& event, std::string_view& line) {
  if (typeid(*this) != typeid(LOGPatternLayout)) return false;
  LOGThreadState& thread = LOGThreadState::current();
  line = build(thread, copyOf(thread), event, event.render());
  return true;
}

std::string_view LOGPatternLayout::build(LOGThreadState& thread, LOGPatternCopy& copy, LOGLoggingEvent& event,
                                         const LOGLoggingEvent::Rendered& message) {
  I18NUtf8Buffer& text = thread.lineText;
  text.limitMemory(MOST_KEPT);
  text.clear();
  LOGPatternConverter* next = copy.converters.data();
  LOGPatternConverter* const end = next + copy.converters.size();
  do {  // again behind an item that failed
    logContain(FAILURES, [&] {
      while (next != end) (next++)->append(text, event, message);
    });
  } while (next != end);
  return text.view();
}

int LOGPatternLayout::ignoresThrowable() { return 1; }
