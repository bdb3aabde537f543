#include "log4vrk/appenders/LOGRateLimitFilter.h"

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGFilterInternals.h"
#include "log4vrk/platform/VRKThrowable.h"

LOGRateLimitFilter::LOGRateLimitFilter() {
  instance("LOGRateLimitFilter");
  LOGFilterInternals::set(*this, INTERNALS);
}

LOGRateLimitFilter::LOGRateLimitFilter(const LOGRateLimitFilter& other)
    : LOGFilter(other), m_maxEvents(other.m_maxEvents), m_seconds(other.m_seconds), m_level(other.m_level) {
  LOGFilterInternals::set(*this, INTERNALS);
}

// Whoever closes appenders by itself is told here, where the number would be lost otherwise.
LOGRateLimitFilter::~LOGRateLimitFilter() {
  if (m_leftOut == 0) return;
  LOGLogLog::warn(I18NString("LOGRateLimitFilter -- no line says that ") + static_cast<unsigned long long>(m_leftOut) +
                  " events were left out");
}

int LOGRateLimitFilter::decide(LOGLoggingEvent* event) {
  if (m_maxEvents <= 0 || m_seconds <= 0) return m_NEUTRAL;
  VRK_ASSERT(event);
  const LOGLevel* const level = event->getLevel();
  if (m_level != nullptr && level != nullptr && level->toInt() > m_level->toInt()) return m_NEUTRAL;
  const Clock::time_point now = Clock::now();
  if (isOver(now)) {
    m_begin = now;
    m_passed = 0;
    m_isDue = m_leftOut > 0;
  }
  if (m_passed < m_maxEvents) {
    ++m_passed;
    return m_NEUTRAL;
  }
  if (!m_first) {
    // Looked up here, by the thread that logs: the notice is printed by another, perhaps.
    event->getThreadName();
    event->getNDC();
    m_first = std::make_unique<LOGLoggingEvent>(*event);
  }
  ++m_leftOut;
  return m_DENY;
}

bool LOGRateLimitFilter::isOver(Clock::time_point now) const {
  using Seconds = std::chrono::duration<double>;  // in which no number of them is too large
  return !m_begin || now - *m_begin >= Seconds(static_cast<double>(m_seconds));
}

std::unique_ptr<LOGLoggingEvent> LOGRateLimitFilter::takeNotice(bool isLast) {
  if (m_leftOut == 0 || !(isLast || m_isDue || isOver(Clock::now()))) return nullptr;
  m_first->setRenderedMessage(I18NString() + static_cast<unsigned long long>(m_leftOut) + " events left out (at most " +
                              m_maxEvents + " in " + m_seconds + " s)");
  m_leftOut = 0;
  m_isDue = false;
  return std::move(m_first);
}

LOGRateLimitFilter* LOGRateLimitFilter::clone() const { return vrkNew<LOGRateLimitFilter>(VRK_HERE, *this); }

const LOGFilterInternals LOGRateLimitFilter::INTERNALS = {
    [](LOGFilter& filter, bool isLast) { return static_cast<LOGRateLimitFilter&>(filter).takeNotice(isLast); }};
