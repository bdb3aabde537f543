#include "log4vrk/appenders/LOGFallbackAppender.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGAppenderLists.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGTaking.h"
#include "log4vrk/platform/VRKList.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr LOGFailureTexts FAILURES = {"LOGFallbackAppender::append -- ", "LOGFallbackAppender::append -- ",
                                      "LOGFallbackAppender::append -- An unknown exception has occurred."};

}  // namespace

const LOGAppenderInternals LOGFallbackAppender::INTERNALS = {
    &typeid(LOGFallbackAppender), false,   &LOGFallbackAppender::appendFast, nullptr, nullptr,
    &LOGFallbackAppender::drain,  nullptr, &LOGFallbackAppender::attachedTo};

LOGFallbackAppender::LOGFallbackAppender() {
  instance("LOGFallbackAppender");
  LOGAppenderInternals::set(*this, INTERNALS);
}

LOGFallbackAppender::~LOGFallbackAppender() = default;

void LOGFallbackAppender::append(LOGLoggingEvent* event) {
  VRK_ASSERT(event);
  // What is called from here may change the appenders.
  const LOGAppenderLists::Snapshot list = LOGAppenderLists::snapshot(m_appenders);
  if (list && isTakenByAny(*list, event)) {
    m_lossSaid = false;
    return;
  }
  LOGTaking::refuse();
  if (std::exchange(m_lossSaid, true)) return;
  LOGLogLog::error("LOGFallbackAppender -- [" + getName() + "] -- no appender takes events: they are lost");
}

// Twice round: those that are passed over have their turn when the others have not taken it.
bool LOGFallbackAppender::isTakenByAny(const LOGAppenderList& list, LOGLoggingEvent* event) {
  for (Out& each : m_out) each.isTried = false;
  const auto takes = [&](const LOGAppenderList::Attached& each) VRK_NO_THREAD_SAFETY_ANALYSIS {
    return isStillAttached(*each.appender, list) && offer(*each.appender, event);
  };
  const auto isPassedOver = [&](const LOGAppenderSkeleton& appender) VRK_NO_THREAD_SAFETY_ANALYSIS {
    const Out* const out = find(appender);
    return out != nullptr && (out->isTried || Clock::now() < out->since + m_retryDelay);
  };
  for (const LOGAppenderList::Attached& each : list.attached) {
    if (!isPassedOver(*each.appender) && takes(each)) return true;
  }
  for (const LOGAppenderList::Attached& each : list.attached) {
    const Out* const out = find(*each.appender);
    if (out != nullptr && !out->isTried && takes(each)) return true;
  }
  return false;
}

bool LOGFallbackAppender::offer(LOGAppenderSkeleton& appender, LOGLoggingEvent* event) {
  const bool isTaken = isTakenBy(appender, event);
  Out* const out = find(appender);
  if (isTaken) {
    if (out == nullptr) return true;
    m_out.erase(m_out.begin() + (out - m_out.data()));
    LOGLogLog::warn("LOGFallbackAppender -- [" + getName() + "] -- [" + appender.getName() + "] takes events again");
    return true;
  }
  if (out != nullptr) {
    *out = {&appender, Clock::now(), true};
  } else {
    m_out.push_back({&appender, Clock::now(), true});
    LOGLogLog::warn("LOGFallbackAppender -- [" + getName() + "] -- [" + appender.getName() +
                    "] does not take events, the next appender is asked");
  }
  return false;
}

// As a logger would deliver. Whatever is raised: there may be another appender.
bool LOGFallbackAppender::isTakenBy(LOGAppenderSkeleton& appender, LOGLoggingEvent* event) {
  LOGTaking taking(LOGThreadState::current());
  const bool isDone = logContainAll(FAILURES, false, [&] {
    appender.activateOptions();
    const LOGAppenderInternals* const internals = LOGAppenderInternals::ofWhole(appender);
    const bool hasFast = internals != nullptr && internals->appendFast != nullptr;
    if (!hasFast || !internals->appendFast(appender, event)) appender.doAppend(event);
    return true;
  });
  return taking.isTaken() && isDone;
}

LOGFallbackAppender::Out* LOGFallbackAppender::find(const LOGAppenderSkeleton& appender) {
  const auto found =
      std::find_if(m_out.begin(), m_out.end(), [&](const Out& each) { return each.appender == &appender; });
  return found != m_out.end() ? &*found : nullptr;
}

bool LOGFallbackAppender::isStillAttached(const LOGAppenderSkeleton& appender, const LOGAppenderList& list) const {
  const LOGAppenderList* const now = m_appenders.place();
  return now == &list || (now != nullptr && now->has(&appender));
}

// The only appender of a logger gets its events without the logger's lock.
bool LOGFallbackAppender::appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event) {
  auto& self = static_cast<LOGFallbackAppender&>(appender);
  if (!LOGAppenderInternals::admitsFast(self, event)) return false;
  self.LOGAppenderSkeleton::doAppend(event);
  return true;
}

bool LOGFallbackAppender::drain(LOGAppenderSkeleton& appender) {
  const LOGAppenderLists::Snapshot list = attachedTo(appender);
  return !list || LOGAppenderInternals::drainAll(*list);
}

LOGAppenderLists::Snapshot LOGFallbackAppender::attachedTo(LOGAppenderSkeleton& appender) {
  auto& self = static_cast<LOGFallbackAppender&>(appender);
  const LOGGuard guard(self);
  return LOGAppenderLists::snapshot(self.m_appenders);
}

void LOGFallbackAppender::close() {
  const LOGGuard guard(*this);
  setClosed(1);
}

void LOGFallbackAppender::addAppender(LOGAppenderSkeleton* newAppender) {
  if (newAppender != nullptr && LOGAppenderInternals::leadsTo(*newAppender, *this)) return;
  const LOGGuard guard(*this);
  m_appenders.addAppender(newAppender);
  // Here, because an event shall not be lost for want of memory to note that an appender has not taken it.
  m_out.reserve(LOGAppenderLists::snapshot(m_appenders)->attached.size());
}

VRKListIterator<LOGAppenderSkeleton*> LOGFallbackAppender::getAllAppenders() {
  const LOGGuard guard(*this);
  return m_appenders.getAllAppenders();
}

LOGAppenderSkeleton* LOGFallbackAppender::getAppender(const I18NString& name) {
  const LOGGuard guard(*this);
  return m_appenders.getAppender(name);
}

bool LOGFallbackAppender::isAttached(LOGAppenderSkeleton* appender) {
  const LOGGuard guard(*this);
  return m_appenders.isAttached(appender);
}

// Who has the lock delivers to nobody, so that a removed appender may be deleted when this returns.
template <typename Change>
void LOGFallbackAppender::remove(Change change) {
  LOGAppenderUse::Lists earlier;
  {
    const LOGGuard guard(*this);
    change(m_appenders);
    const LOGAppenderLists::Snapshot list = LOGAppenderLists::snapshot(m_appenders);
    const auto isGone = [&](const Out& each) { return !list || !list->has(each.appender); };
    m_out.erase(std::remove_if(m_out.begin(), m_out.end(), isGone), m_out.end());
    earlier = LOGAppenderLists::takeEarlier(m_appenders);
  }
  LOGAppenderUse::letGo(std::move(earlier));
}

void LOGFallbackAppender::removeAllAppenders() {
  const LOGAppenderLists::Snapshot appenders = attachedTo(*this);
  LOGAppenderLists::closeAll(appenders);
  remove([&](LOGAppenderAttachableImpl& container) { LOGAppenderLists::forget(container, appenders, nullptr); });
}

void LOGFallbackAppender::removeAppender(LOGAppenderSkeleton* appender) {
  remove([&](LOGAppenderAttachableImpl& container) { container.removeAppender(appender); });
}

void LOGFallbackAppender::removeAppender(const I18NString& name) {
  remove([&](LOGAppenderAttachableImpl& container) { container.removeAppender(name); });
}

void LOGFallbackAppender::setRetryDelay(long milliseconds) {
  const LOGGuard guard(*this);
  m_retryDelay = std::chrono::milliseconds(std::max(0L, milliseconds));
}

long LOGFallbackAppender::getRetryDelay() const {
  const LOGGuard guard(*this);
  return static_cast<long>(m_retryDelay.count());
}
