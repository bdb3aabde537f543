#include "log4vrk/core/LOGLayout.h"

#include <memory>
#include <utility>

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

// A larger text gives its memory back once it has been used.
constexpr std::size_t MOST_KEPT = 32 * 1024;

}  // namespace

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

std::string_view LOGLayout::formatUtf8(LOGLoggingEvent* event) {
  const I18NString& text = format(event);
  I18NUtf8Buffer& utf8 = utf8Result();
  utf8.append(text);
  return utf8.view();
}

bool LOGLayout::formatPlain(LOGLoggingEvent&, std::string_view&) { return false; }

I18NString& LOGLayout::getContentType() { return setResult("text/plain"); }

I18NString& LOGLayout::getHeader() { return setResult(takeSpare()); }

I18NString& LOGLayout::getFooter() { return setResult(takeSpare()); }

int LOGLayout::ignoresThrowable() { return 1; }

LOGLayout* LOGLayout::clone() const {
  VRKAssertError::raise("VRK_ASSERT_NAMED(FALSE, \"Unable to clone LOGLayout + derived objects.\");", VRK_SOURCE, 113);
}

I18NString LOGLayout::takeSpare() {
  I18NString text = std::move(m_spare);
  text.clear();
  return text;
}

I18NString& LOGLayout::setResult(I18NString&& text) {
  m_spare = std::exchange(m_result, std::move(text));
  if (m_spare.length() > MOST_KEPT) m_spare = I18NString();
  return m_result;
}

I18NUtf8Buffer& LOGLayout::utf8Result() {
  m_utf8.limitMemory(MOST_KEPT);
  m_utf8.clear();
  return m_utf8;
}
