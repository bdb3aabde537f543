#include "log4vrk/appenders/LOGLevelMatchFilter.h"

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGOptionConverter.h"
#include "log4vrk/platform/VRKThrowable.h"

const I18NString& LOGLevelMatchFilter::LEVEL_TO_MATCH_OPTION = vrkImmortal<I18NString>("LevelToMatch");
const I18NString& LOGLevelMatchFilter::ACCEPT_ON_MATCH_OPTION = vrkImmortal<I18NString>("AcceptOnMatch");

LOGLevelMatchFilter::LOGLevelMatchFilter() { instance("LOGLevelMatchFilter"); }
LOGLevelMatchFilter::~LOGLevelMatchFilter() = default;

int LOGLevelMatchFilter::decide(LOGLoggingEvent* event) {
  // First: a filter without a level does not mind what the event is.
  if (m_levelToMatch == nullptr) return m_NEUTRAL;
  VRK_ASSERT(event);
  const LOGLevel* const logLevel = event->getLevel();
  VRK_ASSERT(logLevel);
  if (*logLevel != *m_levelToMatch) return m_NEUTRAL;
  return m_acceptOnMatch == 0 ? m_DENY : m_ACCEPT;
}

LOGLevelMatchFilter* LOGLevelMatchFilter::clone() const { return vrkNew<LOGLevelMatchFilter>(VRK_HERE, *this); }

void LOGLevelMatchFilter::setLevelToMatch(const I18NString& name) {
  m_levelToMatch = LOGOptionConverter::toLevel(name, nullptr);
}

I18NString* LOGLevelMatchFilter::getLevelToMatch() const {
  return m_levelToMatch == nullptr ? nullptr : vrkNew<I18NString>(VRK_HERE, m_levelToMatch->toString());
}
