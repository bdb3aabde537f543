#include "log4vrk/core/LOGLayout.h"

#include <memory>
#include <utility>

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGLayoutInternals.h"
#include "log4vrk/platform/VRKThrowable.h"

LOGLayout::LOGLayout() : m_lineSeparator("\n") { instance("LOGLayout"); }

LOGLayout::LOGLayout(const LOGLayout& other)
    : LOGOptionHandler(other),
      LOGObject(other),
      LOGMutex(other),
      m_result(other.m_result),
      m_lineSeparator(other.m_lineSeparator) {}

LOGLayout::~LOGLayout() = default;

void LOGLayout::activateOptions() {}

I18NString& LOGLayout::format(LOGLoggingEvent* event) {
  I18NString text = takeSpare();
  if (event == nullptr) return setResult(std::move(text));

  constexpr LOGFailureTexts FAILURES = {"LOGLayout::format -- some i18nstring exception occurred",
                                        "LOGLayout::format -- some VRKThrowable exception occurred",
                                        "LOGLayout::format -- some generic error occurred"};
  logContain(FAILURES, [&] {
    const std::unique_ptr<const I18NString> message(event->getRenderedMessage());
    if (message != nullptr) text += *message;
  });
  text += m_lineSeparator;
  return setResult(std::move(text));
}

I18NString& LOGLayout::getContentType() { return setResult("text/plain"); }

I18NString& LOGLayout::getHeader() { return setResult(takeSpare()); }

I18NString& LOGLayout::getFooter() { return setResult(takeSpare()); }

int LOGLayout::ignoresThrowable() { return 1; }

LOGLayout* LOGLayout::clone() const {
  VRKAssertError::raise("VRK_ASSERT_NAMED(FALSE, \"Unable to clone LOGLayout + derived objects.\");", VRK_SOURCE, 113);
}

// Two texts take turns. One is the result, which the caller may still be reading; the next is built in the other, with
// the memory of an earlier line.
I18NString LOGLayout::takeSpare() {
  I18NString text = std::move(m_spare);
  text.clear();
  return text;
}

I18NString& LOGLayout::setResult(I18NString&& text) {
  m_spare = std::exchange(m_result, std::move(text));
  if (m_spare.length() > LOGLayoutInternals::MOST_KEPT) m_spare = I18NString();
  return m_result;
}

std::string_view LOGLayoutInternals::formatUtf8(LOGLayout& layout, LOGLoggingEvent* event) {
  if (const LOGLayoutInternals* const internals = of(layout)) return internals->format(layout, event);
  // A layout of the program's. Its UTF-16 is converted into memory that is kept from line to line.
  const I18NString& text = layout.format(event);
  layout.m_utf8.limitMemory(MOST_KEPT);
  layout.m_utf8.clear();
  layout.m_utf8.append(text);
  return layout.m_utf8.view();
}
