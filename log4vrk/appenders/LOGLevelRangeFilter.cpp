#include "log4vrk/appenders/LOGLevelRangeFilter.h"

#include <memory>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGOptionConverter.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

// Asked only where a bound is set, so that a filter without bounds takes even an event without a level.
int rankOf(const LOGLoggingEvent* event) {
  VRK_ASSERT(event);
  const LOGLevel* const lev = event->getLevel();
  VRK_ASSERT(lev);
  return lev->toInt();
}

}  // namespace

const I18NString& LOGLevelRangeFilter::LEVEL_MIN_OPTION = vrkImmortal<I18NString>("LevelMin");
const I18NString& LOGLevelRangeFilter::LEVEL_MAX_OPTION = vrkImmortal<I18NString>("LevelMax");
const I18NString& LOGLevelRangeFilter::ACCEPT_ON_MATCH_OPTION = vrkImmortal<I18NString>("AcceptOnMatch");

LOGLevelRangeFilter::LOGLevelRangeFilter() { instance("LOGLevelRangeFilter"); }
LOGLevelRangeFilter::~LOGLevelRangeFilter() = default;

int LOGLevelRangeFilter::decide(LOGLoggingEvent* event) {
  if (m_levelMin != nullptr && rankOf(event) < m_levelMin->toInt()) return m_DENY;
  if (m_levelMax != nullptr && rankOf(event) > m_levelMax->toInt()) return m_DENY;
  return m_acceptOnMatch != 0 ? m_ACCEPT : m_NEUTRAL;
}

LOGLevelRangeFilter* LOGLevelRangeFilter::clone() const { return vrkNew<LOGLevelRangeFilter>(VRK_HERE, *this); }

// Uneven on purpose; the header says how.
void LOGLevelRangeFilter::setOption(const I18NString& name, const I18NString& value) {
  if (vrkEqualIgnoringCase(name, LEVEL_MIN_OPTION)) {
    m_levelMin = LOGOptionConverter::toLevel(value, nullptr);
  } else if (vrkEqualIgnoringCase(name, LEVEL_MAX_OPTION)) {
    m_acceptOnMatch = LOGOptionConverter::toBoolean(value, m_acceptOnMatch);
  } else if (!vrkEqualIgnoringCase(name, ACCEPT_ON_MATCH_OPTION)) {
    m_levelMax = LOGOptionConverter::toLevel(value, nullptr);
  }
}

VRKList<I18NString>* LOGLevelRangeFilter::getOptionStrings() const {
  std::unique_ptr<VRKList<I18NString>> names(vrkNew<VRKList<I18NString>>(VRK_HERE));
  for (const I18NString* name : {&LEVEL_MIN_OPTION, &LEVEL_MAX_OPTION, &ACCEPT_ON_MATCH_OPTION})
    names->push_back(*name);
  return names.release();
}
