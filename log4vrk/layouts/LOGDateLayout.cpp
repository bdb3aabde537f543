#include "log4vrk/layouts/LOGDateLayout.h"

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKThrowable.h"

const I18NString& LOGDateLayout::NULL_DATE_FORMAT = vrkImmortal<I18NString>("NULL");
const I18NString& LOGDateLayout::RELATIVE_TIME_DATE_FORMAT = vrkImmortal<I18NString>("RELATIVE");
const I18NString& LOGDateLayout::ABSOLUTE_TIME_DATE_FORMAT = vrkImmortal<I18NString>("ABSOLUTE");
const I18NString& LOGDateLayout::DATE_AND_TIME_DATE_FORMAT = vrkImmortal<I18NString>("DATE");
const I18NString& LOGDateLayout::ISO8601_DATE_FORMAT = vrkImmortal<I18NString>("ISO8601");
const I18NString& LOGDateLayout::DATE_FORMAT_OPTION = vrkImmortal<I18NString>("DateFormat");
const I18NString& LOGDateLayout::TIMEZONE_OPTION = vrkImmortal<I18NString>("TimeZone");

LOGDateLayout::LOGDateLayout() { instance("LOGDateLayout"); }

LOGDateLayout::~LOGDateLayout() = default;

void LOGDateLayout::setOption(const I18NString& option, const I18NString& value) {
  if (vrkEqualIgnoringCase(option, DATE_FORMAT_OPTION)) {
    setDateFormat(value);
  } else if (vrkEqualIgnoringCase(option, TIMEZONE_OPTION)) {
    setTimeZone(value);
  }
}

I18NString LOGDateLayout::getDateFormat() {
  const LOGGuard guard(*this);
  return m_dateFormatName;
}

void LOGDateLayout::setTimeZone(const I18NString& name) {
  const LOGGuard guard(*this);
  m_timeZone = LOGTimeZone(name);
  // Only where dates are written: an unset format has the empty name, which renew() would take for a pattern.
  if (m_dateFormat != nullptr) renew();
}

I18NString LOGDateLayout::getTimeZone() {
  const LOGGuard guard(*this);
  return m_timeZone.getName();
}

// Not analysed: the caller of format() holds the lock, which the analysis cannot see through a virtual call.
void LOGDateLayout::dateFormat(I18NString& buffer, LOGLoggingEvent* event) VRK_NO_THREAD_SAFETY_ANALYSIS {
  buffer.clear();
  if (m_dateFormat == nullptr || event == nullptr) return;
  m_dateFormat->append(buffer, LOGDate(event->getTimeStamp(), event->getTimeStampNanos()));
  buffer += ' ';
}

void LOGDateLayout::setDateFormat(const I18NString& format) {
  const LOGGuard guard(*this);
  m_dateFormatName = format;
  renew();
}

void LOGDateLayout::setDateFormat(const I18NString& format, LOGTimeZone* zone) {
  const LOGGuard guard(*this);
  m_timeZone = zone != nullptr ? *zone : LOGTimeZone();
  m_dateFormatName = format;
  renew();
}

void LOGDateLayout::renew() { m_dateFormat = LOGDateFormat::create(m_dateFormatName, m_timeZone); }
