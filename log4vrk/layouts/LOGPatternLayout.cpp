#include "log4vrk/layouts/LOGPatternLayout.h"

#include <algorithm>
#include <memory>
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

I18NString& LOGPatternLayout::format(LOGLoggingEvent* event) VRK_NO_THREAD_SAFETY_ANALYSIS {
  if (event == nullptr) {
    LOGLogLog::error("LOGPatternLayout::format --- Event is NULL.");
    return setResult(takeSpare());
  }
  constexpr LOGFailureTexts FAILURES = {"LOGPatternLayout::format -- some i18nstring exception occurred",
                                        "LOGPatternLayout::format -- some VRKThrowable exception occurred",
                                        "LOGPatternLayout::format -- some generic error occurred"};
  // First, because it may run application code, and that may even set another pattern.
  std::unique_ptr<const I18NString> message;
  if (m_hasMessage) logContain(FAILURES, [&] { message.reset(event->getRenderedMessage()); });
  I18NString text = takeSpare();
  for (LOGPatternConverter& converter : m_converters) {
    logContain(FAILURES, [&] { converter.append(text, *event, message.get()); });
  }
  return setResult(std::move(text));
}

int LOGPatternLayout::ignoresThrowable() { return 1; }
