#include "log4vrk/layouts/LOGPatternLayout.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "log4vrk/core/LOGContainment.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/layouts/LOGPatternConverter.h"
#include "log4vrk/layouts/LOGPatternParser.h"

LOGPatternLayout::LOGPatternLayout() : LOGPatternLayout("%r [%t] %p %c %x - %m%n") {}

LOGPatternLayout::LOGPatternLayout(const I18NString& pattern) {
  instance("LOGPatternLayout");
  setConversionPattern(pattern);
}

LOGPatternLayout::~LOGPatternLayout() = default;

void LOGPatternLayout::setConversionPattern(const I18NString& pattern) {
  std::vector<LOGPatternConverter> converters = LOGPatternParser(pattern).parse();
  const bool hasMessage = std::any_of(converters.begin(), converters.end(),
                                      [](const LOGPatternConverter& converter) { return converter.letter == u'm'; });
  I18NString copy = pattern;
  const LOGGuard guard(*this);
  m_pattern = std::move(copy);
  m_converters.swap(converters);
  m_hasMessage = hasMessage;
}

I18NString LOGPatternLayout::getConversionPattern() {
  const LOGGuard guard(*this);
  return m_pattern;
}

I18NString& LOGPatternLayout::format(LOGLoggingEvent* event) {
  I18NString text = takeSpare();
  text.append(build(event));
  return setResult(std::move(text));
}

std::string_view LOGPatternLayout::formatUtf8(LOGLoggingEvent* event) {
  if (typeid(*this) != typeid(LOGPatternLayout))
    return LOGLayout::formatUtf8(event);  // it may have a format() of its own
  return build(event);
}

std::string_view LOGPatternLayout::build(LOGLoggingEvent* event) VRK_NO_THREAD_SAFETY_ANALYSIS {
  if (event == nullptr) {
    LOGLogLog::error("LOGPatternLayout::format --- Event is NULL.");
    return {};
  }
  constexpr LOGFailureTexts FAILURES = {"LOGPatternLayout::format -- some i18nstring exception occurred",
                                        "LOGPatternLayout::format -- some VRKThrowable exception occurred",
                                        "LOGPatternLayout::format -- some generic error occurred"};
  // First, because it may run application code, and that may even set another pattern.
  LOGLoggingEvent::Rendered message;
  if (m_hasMessage) logContain(FAILURES, [&] { message = event->render(); });
  I18NUtf8Buffer& text = utf8Result();
  LOGPatternConverter* next = m_converters.data();
  LOGPatternConverter* const end = next + m_converters.size();
  do {  // again behind an item that failed
    logContain(FAILURES, [&] {
      while (next != end) (next++)->append(text, *event, message);
    });
  } while (next != end);
  return text.view();
}

int LOGPatternLayout::ignoresThrowable() { return 1; }
