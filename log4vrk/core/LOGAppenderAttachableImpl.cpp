#include "log4vrk/core/LOGAppenderAttachableImpl.h"

#include <algorithm>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGHashtable.h"
#include "log4vrk/core/internal/LOGAppenderBundle.h"
#include "log4vrk/core/internal/LOGAttached.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGThreadState.h"

LOGAppender::~LOGAppender() = default;
LOGAppenderAttachable::~LOGAppenderAttachable() = default;

struct LOGAppenderAttachableImpl::Lists {
  VRKList<LOGAppenderSkeleton*> appenders;
  Snapshot attached;  // the same appenders in the same order
  Snapshot removed;   // while a loop may be in the middle of one of them
};

LOGAppenderAttachableImpl::LOGAppenderAttachableImpl() = default;
LOGAppenderAttachableImpl::LOGAppenderAttachableImpl(const LOGAppenderAttachableImpl& other)
    : LOGAppenderAttachable(other),
      LOGMutex(other),
      m_lists(other.m_lists != nullptr ? new Lists{other.m_lists->appenders, other.m_lists->attached, {}} : nullptr),
      m_any(other.mayHaveAppenders()),
      m_onlyPlain(other.onlyPlainAppender()) {}
LOGAppenderAttachableImpl::~LOGAppenderAttachableImpl() { delete m_lists; }

LOGAppenderAttachableImpl::Lists& LOGAppenderAttachableImpl::lists() {
  if (m_lists == nullptr) m_lists = new Lists;
  return *m_lists;
}

const LOGAppenderAttachableImpl::Snapshot& LOGAppenderAttachableImpl::attached() const {
  static const Snapshot& none = vrkImmortal<Snapshot>();
  return m_lists != nullptr ? m_lists->attached : none;
}

LOGAppenderAttachableImpl::Snapshot LOGAppenderAttachableImpl::snapshot() const { return attached(); }

void LOGAppenderAttachableImpl::addAppender(LOGAppenderSkeleton* newAppender) {
  VRK_ASSERT(newAppender);
  for (const Attached& there : attached()) {
    if (*there.appender == *newAppender) return;
  }
  lists().attached.push_back({newAppender, newAppender->m_bundle.lock()});
  lists().appenders.push_back(newAppender);
  publish();
}

void LOGAppenderAttachableImpl::publish() {
  const Snapshot& all = attached();
  const bool plain = all.size() == 1 && all[0].appender->takesPlain();
  m_onlyPlain.store(plain ? all[0].appender : nullptr);
  m_any.store(!all.empty(), std::memory_order_release);
}

VRKListIterator<LOGAppenderSkeleton*> LOGAppenderAttachableImpl::getAllAppenders() {
  return VRKListIterator<LOGAppenderSkeleton*>(lists().appenders);
}

LOGAppenderSkeleton* LOGAppenderAttachableImpl::getAppender(const I18NString& name) {
  for (const Attached& there : attached()) {
    if (there.appender->getName() == name) return there.appender;
  }
  return nullptr;
}

bool LOGAppenderAttachableImpl::isAttached(LOGAppenderSkeleton* appender) {
  const Snapshot& all = attached();
  if (all.empty()) return false;
  VRK_ASSERT(appender);
  return std::any_of(all.begin(), all.end(), [&](const Attached& a) { return *a.appender == *appender; });
}

void LOGAppenderAttachableImpl::removeAppender(LOGAppenderSkeleton* appender) {
  if (attached().empty()) return;
  VRK_ASSERT(appender);
  for (const Attached& there : snapshot()) {
    if (*there.appender == *appender) unlink(there.appender);
  }
}

void LOGAppenderAttachableImpl::removeAppender(const I18NString& name) {
  if (LOGAppenderSkeleton* const appender = getAppender(name)) unlink(appender);
}

void LOGAppenderAttachableImpl::unlink(LOGAppenderSkeleton* appender) {
  if (m_lists == nullptr) return;
  auto& [appenders, all, removed] = *m_lists;
  for (auto element = appenders.begin(); element != appenders.end(); ++element) {
    if (*element != appender) continue;
    appenders.erase(element);
    break;
  }
  const auto found = std::find_if(all.begin(), all.end(), [&](const Attached& a) { return a.appender == appender; });
  if (found == all.end()) return;
  if (m_holdsBack) appender->release();
  if (m_loops > 0) removed.push_back(*found);
  all.erase(found);
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
  if (m_lists == nullptr) return 0;
  const Loop loop(m_loops, m_lists->removed);
  const Snapshot& all = m_lists->attached;
  // What is called here may remove and add appenders, itself included: nobody shall be passed over for that, freed in
  // the middle of a call, or called for ever.
  std::size_t next = 0;
  for (std::size_t calls = all.size(); calls > 0 && next < all.size(); --calls) {
    LOGAppenderSkeleton* const called = all[next].appender;
    called->activateOptions();
    called->doAppend(event);
    if (next < all.size() && all[next].appender == called) ++next;
  }
  return static_cast<int>(all.size());
}

LOGAppenderAttachableImpl::HoldingBack::HoldingBack(LOGAppenderAttachableImpl& container)
    : m_container(container), m_all(!container.attached().empty()) {
  LOGThreadState::current().holdsBack = container.m_holdsBack = true;
  for (const Attached& there : container.attached()) m_all = there.appender->holdBack() && m_all;
}

LOGAppenderAttachableImpl::HoldingBack::~HoldingBack() {
  LOGThreadState::current().holdsBack = m_container.m_holdsBack = false;
  for (const Attached& there : m_container.attached()) there.appender->release();
}
