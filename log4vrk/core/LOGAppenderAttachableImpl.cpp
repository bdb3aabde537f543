#include "log4vrk/core/LOGAppenderAttachableImpl.h"

#include <algorithm>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGHashtable.h"
#include "log4vrk/core/internal/LOGAppenderBundle.h"
#include "log4vrk/core/internal/LOGAppenderList.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGThreadState.h"

using Attached = LOGAppenderList::Attached;

LOGAppender::~LOGAppender() = default;
LOGAppenderAttachable::~LOGAppenderAttachable() = default;

namespace {

const std::vector<Attached>& in(const LOGAppenderAttachableImpl::Snapshot& list) {
  static const std::vector<Attached>& none = vrkImmortal<std::vector<Attached>>();
  return list ? list->attached : none;
}

}  // namespace

LOGAppenderAttachableImpl::LOGAppenderAttachableImpl() = default;
LOGAppenderAttachableImpl::LOGAppenderAttachableImpl(const LOGAppenderAttachableImpl& other)
    : LOGAppenderAttachable(other),
      LOGMutex(other),
      m_appenders(other.m_appenders),
      m_current(other.m_current),
      m_place(m_current.get()) {}
LOGAppenderAttachableImpl::~LOGAppenderAttachableImpl() = default;

// Puts a changed copy in place of the list. Nothing has happened when memory is short.
template <typename Change>
void LOGAppenderAttachableImpl::change(Change change) {
  std::vector<Attached> appenders = in(m_current);
  change(appenders);
  Snapshot next = appenders.empty() ? nullptr : std::make_shared<LOGAppenderList>(std::move(appenders));
  if (m_current) {
    const auto isGone = [](const std::weak_ptr<const LOGAppenderList>& each) { return each.expired(); };
    m_earlier.erase(std::remove_if(m_earlier.begin(), m_earlier.end(), isGone), m_earlier.end());
    m_kept.reserve(m_kept.size() + 1);
    m_earlier.push_back(m_current);
    m_kept.push_back(m_current);
  }
  m_current = std::move(next);
  m_place.store(m_current.get());
}

std::vector<LOGAppenderAttachableImpl::Snapshot> LOGAppenderAttachableImpl::takeEarlier() {
  std::vector<Snapshot> lists;
  for (const std::weak_ptr<const LOGAppenderList>& each : m_earlier) {
    if (Snapshot list = each.lock()) lists.push_back(std::move(list));
  }
  m_kept.clear();
  return lists;
}

void LOGAppenderAttachableImpl::addAppender(LOGAppenderSkeleton* newAppender) {
  VRK_ASSERT(newAppender);
  for (const Attached& attached : in(m_current)) {
    if (*attached.appender == *newAppender) return;
  }
  m_appenders.push_back(newAppender);
  change([&](std::vector<Attached>& list) { list.push_back({newAppender, newAppender->m_bundle.lock()}); });
}

VRKListIterator<LOGAppenderSkeleton*> LOGAppenderAttachableImpl::getAllAppenders() {
  return VRKListIterator<LOGAppenderSkeleton*>(m_appenders);
}

LOGAppenderSkeleton* LOGAppenderAttachableImpl::getAppender(const I18NString& name) {
  for (const Attached& attached : in(m_current)) {
    if (attached.appender->getName() == name) return attached.appender;
  }
  return nullptr;
}

bool LOGAppenderAttachableImpl::isAttached(LOGAppenderSkeleton* appender) {
  if (!m_current) return false;
  VRK_ASSERT(appender);
  const std::vector<Attached>& list = in(m_current);
  return std::any_of(list.begin(), list.end(), [&](const Attached& each) { return *each.appender == *appender; });
}

void LOGAppenderAttachableImpl::removeAppender(LOGAppenderSkeleton* appender) {
  if (!m_current) return;
  VRK_ASSERT(appender);
  const Snapshot before = m_current;
  for (const Attached& attached : before->attached) {
    if (*attached.appender == *appender) unlink(attached.appender);
  }
}

void LOGAppenderAttachableImpl::removeAppender(const I18NString& name) {
  if (LOGAppenderSkeleton* const appender = getAppender(name)) unlink(appender);
}

void LOGAppenderAttachableImpl::unlink(LOGAppenderSkeleton* appender) {
  if (!m_current || !m_current->has(appender)) return;
  change([&](std::vector<Attached>& list) {
    list.erase(std::find_if(list.begin(), list.end(), [&](const Attached& each) { return each.appender == appender; }));
  });
  const auto element = std::find(m_appenders.begin(), m_appenders.end(), appender);
  if (element != m_appenders.end()) m_appenders.erase(element);
}

void LOGAppenderAttachableImpl::removeAllAppenders() { removeAllAppenders(nullptr); }

void LOGAppenderAttachableImpl::removeAllAppenders(LOGHashtable* table) {
  const Snapshot appenders = m_current;
  closeAll(appenders);
  forget(appenders, table);
}

void LOGAppenderAttachableImpl::closeAll(const Snapshot& appenders) {
  std::exception_ptr failure;
  for (const Attached& attached : in(appenders)) {
    try {
      attached.appender->close();
    }
    VRK_RETHROW_FORCED_UNWIND
    catch (...) {
      if (!failure) failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

void LOGAppenderAttachableImpl::forget(const Snapshot& appenders, LOGHashtable* table) {
  for (const Attached& attached : in(appenders)) {
    LOGAppenderSkeleton* const appender = attached.appender;
    if (table != nullptr && table->get(appender->getName()) == appender) appender->markAsStale();
    unlink(appender);
  }
}

int LOGAppenderAttachableImpl::appendLoopOnAppenders(LOGLoggingEvent* event) {
  const Snapshot list = m_current;  // what is called here may replace it
  return list ? list->append(event, LOGThreadState::current(), m_place) : 0;
}
