#include "log4vrk/appenders/LOGStringMatchFilter.h"

#include <memory>

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGOptionConverter.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKThrowable.h"

const I18NString& LOGStringMatchFilter::STRING_TO_MATCH_OPTION = vrkImmortal<I18NString>("StringToMatch");
const I18NString& LOGStringMatchFilter::ACCEPT_ON_MATCH_OPTION = vrkImmortal<I18NString>("AcceptOnMatch");

LOGStringMatchFilter::LOGStringMatchFilter() { instance("LOGStringMatchFilter"); }
LOGStringMatchFilter::~LOGStringMatchFilter() = default;

int LOGStringMatchFilter::decide(LOGLoggingEvent* event) {
  VRK_ASSERT(event);
  const std::unique_ptr<const I18NString> message(event->getRenderedMessage());
  if (message == nullptr || m_stringToMatch.isEmpty()) return m_NEUTRAL;
  // Any occurrence will do. findLast() is the search that I18NString has.
  if (message->findLast(m_stringToMatch) == I18NString::npos) return m_NEUTRAL;
  return m_acceptOnMatch == 0 ? m_DENY : m_ACCEPT;
}

LOGStringMatchFilter* LOGStringMatchFilter::clone() const { return vrkNew<LOGStringMatchFilter>(VRK_HERE, *this); }

void LOGStringMatchFilter::setOption(const I18NString& name, const I18NString& value) {
  if (vrkEqualIgnoringCase(name, STRING_TO_MATCH_OPTION)) {
    m_stringToMatch = value;
  } else if (vrkEqualIgnoringCase(name, ACCEPT_ON_MATCH_OPTION)) {
    m_acceptOnMatch = LOGOptionConverter::toBoolean(value, m_acceptOnMatch);
  }
}

VRKList<I18NString>* LOGStringMatchFilter::getOptionStrings() const {
  std::unique_ptr<VRKList<I18NString>> names(vrkNew<VRKList<I18NString>>(VRK_HERE));
  for (const I18NString* name : {&STRING_TO_MATCH_OPTION, &ACCEPT_ON_MATCH_OPTION}) names->push_back(*name);
  return names.release();
}
