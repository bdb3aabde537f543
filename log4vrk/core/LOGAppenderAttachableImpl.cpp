#include "log4vrk/core/LOGAppenderAttachableImpl.h"

#include <algorithm>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGHashtable.h"
#include "log4vrk/core/internal/LOGAppenderBundle.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGAppenderLists.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/VRKList.h"

using Attached = LOGAppenderList::Attached;

LOGAppender::~LOGAppender() = default;
LOGAppenderAttachable::~LOGAppenderAttachable() = default;

struct LOGAppenderAttachableImpl::Lists {
  VRKList<LOGAppenderSkeleton*> appenders;  // the same as in the list, for those who walk the living list
  std::shared_ptr<const LOGAppenderList> current;
  // Lists that have been replaced and may still be in use. `earlier` names them all. Whoever removes an appender takes
  // them over and waits until nobody uses them; an addition waits for nobody, so that `kept` holds them until then.
  std::vector<std::weak_ptr<const LOGAppenderList>> earlier;
  LOGAppenderUse::Lists kept;
};

namespace {

const std::vector<Attached>& in(const LOGAppenderList* list) {
  static const std::vector<Attached>& none = vrkImmortal<std::vector<Attached>>();
  return list != nullptr ? list->attached : none;
}

}  // namespace

LOGAppenderAttachableImpl::LOGAppenderAttachableImpl() = default;

LOGAppenderAttachableImpl::LOGAppenderAttachableImpl(const LOGAppenderAttachableImpl& other)
    : LOGAppenderAttachable(other), LOGMutex(other) {
  if (other.m_lists == nullptr) return;
  m_lists = new Lists{other.m_lists->appenders, other.m_lists->current, {}, {}};
  m_place = m_lists->current.get();
}

LOGAppenderAttachableImpl::~LOGAppenderAttachableImpl() { delete m_lists; }

LOGAppenderAttachableImpl::Lists& LOGAppenderAttachableImpl::lists() {
  if (m_lists == nullptr) m_lists = new Lists;
  return *m_lists;
}

// Puts a changed copy in place of the list, because deliveries read it without a lock. When memory is short, nothing
// has happened.
template <typename Change>
void LOGAppenderAttachableImpl::change(Change change) {
  Lists& mine = lists();
  std::vector<Attached> appenders = in(mine.current.get());
  change(appenders);
  LOGAppenderLists::Snapshot next =
      appenders.empty() ? nullptr : std::make_shared<LOGAppenderList>(std::move(appenders));
  if (mine.current) {
    const auto isGone = [](const std::weak_ptr<const LOGAppenderList>& each) { return each.expired(); };
    mine.earlier.erase(std::remove_if(mine.earlier.begin(), mine.earlier.end(), isGone), mine.earlier.end());
    mine.kept.reserve(mine.kept.size() + 1);
    mine.earlier.push_back(mine.current);
    mine.kept.push_back(mine.current);
  }
  mine.current = std::move(next);
  m_place.store(mine.current.get());
}

LOGAppenderUse::Lists LOGAppenderLists::takeEarlier(LOGAppenderAttachableImpl& container) {
  LOGAppenderUse::Lists lists;
  if (container.m_lists == nullptr) return lists;
  for (const std::weak_ptr<const LOGAppenderList>& each : container.m_lists->earlier) {
    if (Snapshot list = each.lock()) lists.push_back(std::move(list));
  }
  container.m_lists->kept.clear();
  return lists;
}

LOGAppenderLists::Snapshot LOGAppenderLists::snapshot(const LOGAppenderAttachableImpl& container) {
  return container.m_lists != nullptr ? container.m_lists->current : nullptr;
}

void LOGAppenderAttachableImpl::addAppender(LOGAppenderSkeleton* newAppender) {
  VRK_ASSERT(newAppender);
  for (const Attached& attached : in(m_place)) {
    if (*attached.appender == *newAppender) return;
  }
  lists().appenders.push_back(newAppender);
  change([&](std::vector<Attached>& list) { list.push_back({newAppender, newAppender->m_bundle.lock()}); });
}

VRKListIterator<LOGAppenderSkeleton*> LOGAppenderAttachableImpl::getAllAppenders() {
  return VRKListIterator<LOGAppenderSkeleton*>(lists().appenders);
}

LOGAppenderSkeleton* LOGAppenderAttachableImpl::getAppender(const I18NString& name) {
  for (const Attached& attached : in(m_place)) {
    if (attached.appender->getName() == name) return attached.appender;
  }
  return nullptr;
}

bool LOGAppenderAttachableImpl::isAttached(LOGAppenderSkeleton* appender) {
  if (m_place == nullptr) return false;
  VRK_ASSERT(appender);
  const std::vector<Attached>& list = in(m_place);
  return std::any_of(list.begin(), list.end(), [&](const Attached& each) { return *each.appender == *appender; });
}

void LOGAppenderAttachableImpl::removeAppender(LOGAppenderSkeleton* appender) {
  if (m_place == nullptr) return;
  VRK_ASSERT(appender);
  // The list as it is now, because unlink() replaces it. Several appenders may be equal.
  const LOGAppenderLists::Snapshot before = LOGAppenderLists::snapshot(*this);
  for (const Attached& attached : before->attached) {
    if (*attached.appender == *appender) unlink(attached.appender);
  }
}

void LOGAppenderAttachableImpl::removeAppender(const I18NString& name) {
  if (LOGAppenderSkeleton* const appender = getAppender(name)) unlink(appender);
}

void LOGAppenderAttachableImpl::unlink(LOGAppenderSkeleton* appender) {
  if (m_place == nullptr || !m_place.load()->has(appender)) return;
  change([&](std::vector<Attached>& list) {
    list.erase(std::find_if(list.begin(), list.end(), [&](const Attached& each) { return each.appender == appender; }));
  });
  VRKList<LOGAppenderSkeleton*>& living = lists().appenders;
  const auto element = std::find(living.begin(), living.end(), appender);
  if (element != living.end()) living.erase(element);
}

void LOGAppenderAttachableImpl::removeAllAppenders() { removeAllAppenders(nullptr); }

void LOGAppenderAttachableImpl::removeAllAppenders(LOGHashtable* table) {
  const LOGAppenderLists::Snapshot appenders = LOGAppenderLists::snapshot(*this);
  LOGAppenderLists::closeAll(appenders);
  LOGAppenderLists::forget(*this, appenders, table);
}

// All of them are closed, even when one raises. The first error goes on to the caller.
void LOGAppenderLists::closeAll(const Snapshot& appenders) {
  std::exception_ptr failure;
  for (const Attached& attached : in(appenders.get())) {
    try {
      LOGAppenderInternals::appendLastNotices(*attached.appender);
      attached.appender->close();
    }
    VRK_RETHROW_FORCED_UNWIND
    catch (...) {
      if (!failure) failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

// An appender that the table holds under its name is stale: the next configuration that refers to it makes a new one.
void LOGAppenderLists::forget(LOGAppenderAttachableImpl& container, const Snapshot& appenders, LOGHashtable* table) {
  for (const Attached& attached : in(appenders.get())) {
    LOGAppenderSkeleton* const appender = attached.appender;
    if (table != nullptr && table->get(appender->getName()) == appender) appender->markAsStale();
    container.unlink(appender);
  }
}

int LOGAppenderAttachableImpl::appendLoopOnAppenders(LOGLoggingEvent* event) {
  const LOGAppenderLists::Snapshot list = LOGAppenderLists::snapshot(*this);  // what is called here may replace it
  return list ? list->append(event, LOGThreadState::current(), m_place) : 0;
}
