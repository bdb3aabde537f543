#include "log4vrk/core/LOGAppenderAttachableImpl.h"

#include <algorithm>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGHashtable.h"
#include "log4vrk/core/internal/LOGAppenderBundle.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGThreadState.h"

LOGAppender::~LOGAppender() = default;
LOGAppenderAttachable::~LOGAppenderAttachable() = default;

LOGAppenderAttachableImpl::LOGAppenderAttachableImpl() = default;
LOGAppenderAttachableImpl::LOGAppenderAttachableImpl(const LOGAppenderAttachableImpl& other)
    : LOGAppenderAttachable(other),
      LOGMutex(other),
      m_appenders(other.m_appenders),
      m_attached(other.m_attached),
      m_any(other.mayHaveAppenders()),
      m_onlyPlain(other.onlyPlainAppender()) {}
LOGAppenderAttachableImpl::~LOGAppenderAttachableImpl() = default;

void LOGAppenderAttachableImpl::addAppender(LOGAppenderSkeleton* newAppender) {
  VRK_ASSERT(newAppender);
  for (const Attached& attached : m_attached) {
    if (*attached.appender == *newAppender) return;
  }
  m_attached.push_back({newAppender, newAppender->m_bundle.lock()});
  m_appenders.push_back(newAppender);
  publish();
}

void LOGAppenderAttachableImpl::publish() {
  const bool plain = m_attached.size() == 1 && m_attached[0].appender->takesPlain();
  m_onlyPlain.store(plain ? m_attached[0].appender : nullptr);
  m_any.store(!m_attached.empty(), std::memory_order_release);
}

VRKListIterator<LOGAppenderSkeleton*> LOGAppenderAttachableImpl::getAllAppenders() {
  return VRKListIterator<LOGAppenderSkeleton*>(m_appenders);
}

LOGAppenderSkeleton* LOGAppenderAttachableImpl::getAppender(const I18NString& name) {
  for (const Attached& attached : m_attached) {
    if (attached.appender->getName() == name) return attached.appender;
  }
  return nullptr;
}

bool LOGAppenderAttachableImpl::isAttached(LOGAppenderSkeleton* appender) {
  if (m_attached.empty()) return false;
  VRK_ASSERT(appender);
  return std::any_of(m_attached.begin(), m_attached.end(), [&](const Attached& a) { return *a.appender == *appender; });
}

void LOGAppenderAttachableImpl::removeAppender(LOGAppenderSkeleton* appender) {
  if (m_attached.empty()) return;
  VRK_ASSERT(appender);
  for (const Attached& attached : snapshot()) {
    if (*attached.appender == *appender) unlink(attached.appender);
  }
}

void LOGAppenderAttachableImpl::removeAppender(const I18NString& name) {
  if (LOGAppenderSkeleton* const appender = getAppender(name)) unlink(appender);
}

void LOGAppenderAttachableImpl::unlink(LOGAppenderSkeleton* appender) {
  for (auto element = m_appenders.begin(); element != m_appenders.end(); ++element) {
    if (*element != appender) continue;
    m_appenders.erase(element);
    break;
  }
  const auto found =
      std::find_if(m_attached.begin(), m_attached.end(), [&](const Attached& a) { return a.appender == appender; });
  if (found == m_attached.end()) return;
  if (m_holdsBack) appender->release();
  if (m_loops > 0) m_removed.push_back(*found);
  m_attached.erase(found);
  publish();
}

void LOGAppenderAttachableImpl::removeAllAppenders() { removeAllAppenders(nullptr); }

void LOGAppenderAttachableImpl::removeAllAppenders(LOGHashtable* table) {
  const Snapshot appenders = snapshot();
  closeAll(appenders);
  forget(appenders, table);
}

void LOGAppenderAttachableImpl::closeAll(const Snapshot& appenders) {
  std::exception_ptr failure;
  for (const Attached& attached : appenders) {
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
  for (const Attached& attached : appenders) {
    LOGAppenderSkeleton* const appender = attached.appender;
    if (table != nullptr && table->get(appender->getName()) == appender) appender->markAsStale();
    unlink(appender);
  }
}

namespace {

// Counts the loops that are under way, and lets go of what was removed meanwhile when the last of them ends.
class Loop {
 public:
  Loop(int& loops, LOGAppenderAttachableImpl::Snapshot& removed) : m_loops(loops), m_removed(removed) { ++m_loops; }
  ~Loop() {
    if (--m_loops == 0 && !m_removed.empty()) LOGAppenderAttachableImpl::Snapshot().swap(m_removed);
  }
  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;

 private:
  int& m_loops;
  LOGAppenderAttachableImpl::Snapshot& m_removed;
};

}  // namespace

int LOGAppenderAttachableImpl::appendLoopOnAppenders(LOGLoggingEvent* event) {
  const Loop loop(m_loops, m_removed);
  // What is called here may remove and add appenders, itself included: nobody shall be passed over for that, freed in
  // the middle of a call, or called for ever.
  std::size_t next = 0;
  for (std::size_t calls = m_attached.size(); calls > 0 && next < m_attached.size(); --calls) {
    LOGAppenderSkeleton* const called = m_attached[next].appender;
    called->activateOptions();
    called->doAppend(event);
    if (next < m_attached.size() && m_attached[next].appender == called) ++next;
  }
  return static_cast<int>(m_attached.size());
}

LOGAppenderAttachableImpl::HoldingBack::HoldingBack(LOGAppenderAttachableImpl& container)
    : m_container(container), m_all(!container.m_attached.empty()) {
  LOGThreadState::current().holdsBack = container.m_holdsBack = true;
  for (const Attached& attached : container.m_attached) m_all = attached.appender->holdBack() && m_all;
}

LOGAppenderAttachableImpl::HoldingBack::~HoldingBack() {
  LOGThreadState::current().holdsBack = m_container.m_holdsBack = false;
  for (const Attached& attached : m_container.m_attached) attached.appender->release();
}
