#include "log4vrk/core/LOGAppenderSkeleton.h"

#include "log4vrk/core/LOGErrorHandler.h"
#include "log4vrk/core/LOGFilter.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGAppenderBundle.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGFilterInternals.h"
#include "log4vrk/core/internal/LOGTaking.h"

const LOGFailureTexts LOGAppenderSkeleton::APPEND_FAILURES = {
    "LOGAppenderSkeleton::doAppend -- RunTime Error in I18NString",
    "LOGAppenderSkeleton::doAppend -- VRK Exception occured", "LOGAppenderSkeleton::doAppend -- An Exception occured",
    LOGFailureTexts::EVENT_IS_LOST};

// Frees a handler that a program handed over, unless it has been given back.
struct LOGAppenderSkeleton::HandlerOwner {
  bool givenBack = false;
  void operator()(LOGErrorHandler* handler) const {
    if (!givenBack) delete handler;
  }
};

LOGAppenderSkeleton::LOGAppenderSkeleton() { instance("LOGAppenderSkeleton"); }

LOGAppenderSkeleton::LOGAppenderSkeleton(const LOGAppenderSkeleton& other)
    : LOGAppender(other), LOGObject(other), LOGMutex(other) {
  copyFrom(other);
}

LOGAppenderSkeleton& LOGAppenderSkeleton::operator=(const LOGAppenderSkeleton& other) {
  if (this == &other) return *this;
  LOGObject::operator=(other);
  copyFrom(other);
  return *this;
}

void LOGAppenderSkeleton::copyFrom(const LOGAppenderSkeleton& other) {
  // Before the lock, since two appenders may be copied into each other at once.
  std::shared_ptr<LOGErrorHandler> handler = other.errorHandlerShare();
  const LOGGuard guard(*this);
  m_name = other.m_name;
  m_closed = other.m_closed.load();
  m_stale = other.m_stale.load();
  m_headFilter = other.m_headFilter.load();
  m_tailFilter = other.m_tailFilter.load();
  m_layout = other.m_layout.load();
  m_threshold = other.m_threshold.load();
  m_errorHandler = handler.get();
  const LOGLeafGuard own(m_handlerMutex);
  m_ownedErrorHandler.swap(handler);
}

LOGAppenderSkeleton::~LOGAppenderSkeleton() = default;

void LOGAppenderSkeleton::activateOptions() {}

void LOGAppenderSkeleton::append(LOGLoggingEvent*) {}

bool LOGAppenderSkeleton::requiresLayout() { return false; }

void LOGAppenderSkeleton::close() {}

void LOGAppenderSkeleton::addFilter(LOGFilter* filter) {
  const LOGGuard guard(*this);
  if (getFilter() != nullptr) {
    VRK_ASSERT(m_tailFilter);
    m_tailFilter.load()->setNext(filter);
  } else {
    m_headFilter = filter;
  }
  m_tailFilter = filter;
}

void LOGAppenderSkeleton::clearFilters() {
  const LOGGuard guard(*this);
  m_headFilter = nullptr;
  m_tailFilter = nullptr;
}

void LOGAppenderSkeleton::reportClosed() const {
  LOGTaking::refuse();
  LOGLogLog::error("Attempted to append to closed appender named [" + m_name + "].");
}

void LOGAppenderSkeleton::doAppend(LOGLoggingEvent* event) {
  if (getClosed() == 1) {
    reportClosed();
    return;
  }
  logContain(APPEND_FAILURES, [&] {
    VRK_ASSERT(event);
    const LOGAppenderInternals* const internals = LOGAppenderInternals::ofWhole(*this);
    if (internals == nullptr || !internals->appendsWithoutLock) {
      const LOGGuard guard(*this);
      if (!admits(event, getFilter())) return;
      appendNotices(false);
      append(event);
      return;
    }
    // An appender that locks for itself still asks its filters under the lock, as their contract says. Whether there
    // are any is asked once: a filter that is added from here on comes too late for this event.
    if (getFilter() != nullptr) {
      const LOGGuard guard(*this);
      if (!admits(event, getFilter())) return;
    } else if (!admits(event, nullptr)) {
      return;
    }
    appendNotices(false);
    append(event);
  });
}

// The lock is held for the filters alone where the appender locks for itself.
void LOGAppenderSkeleton::appendNotices(bool isLast) {
  for (LOGFilter* filter = getFilter(); filter != nullptr; filter = filter->getNext()) {
    const LOGFilterInternals* const internals = LOGFilterInternals::of(*filter);
    if (internals == nullptr) continue;
    std::unique_ptr<LOGLoggingEvent> notice;
    {
      const LOGGuard guard(*this);
      notice = internals->takeNotice(*filter, isLast);
    }
    if (notice) append(notice.get());
  }
}

void LOGAppenderSkeleton::appendLastNotices() {
  if (getClosed() == 1 || getFilter() == nullptr) return;
  logContainAll(APPEND_FAILURES, [&] {
    const LOGAppenderInternals* const internals = LOGAppenderInternals::ofWhole(*this);
    if (internals != nullptr && internals->appendsWithoutLock) {
      appendNotices(true);
    } else {
      const LOGGuard guard(*this);
      appendNotices(true);
    }
  });
}

bool LOGAppenderSkeleton::admits(LOGLoggingEvent* event, LOGFilter* filter) const {
  // It may have been closed by the thread that had the lock.
  if (getClosed() == 1) {
    reportClosed();
    return false;
  }
  return isAsSevereAsThreshold(event->getLevel()) && isAccepted(event, filter);
}

bool LOGAppenderSkeleton::isAccepted(LOGLoggingEvent* event, LOGFilter* filter) {
  while (filter != nullptr) {
    switch (filter->decide(event)) {
      case LOGFilter::m_DENY:
        return false;
      case LOGFilter::m_ACCEPT:
        return true;
      case LOGFilter::m_NEUTRAL:
        filter = filter->getNext();
        break;
      default:
        break;  // asked again, as the filter's contract says
    }
  }
  return true;
}

bool LOGAppenderSkeleton::isAsSevereAsThreshold(const LOGLevel* level) const {
  const LOGLevel* const threshold = getThreshold();
  return threshold == nullptr || threshold->isGreaterOrEqual(level);
}

// A handler that a document has configured belongs to the appender's bundle, any other to whoever shares it here.
std::shared_ptr<LOGErrorHandler> LOGAppenderSkeleton::ownerOf(LOGErrorHandler* handler) const {
  if (const std::shared_ptr<LOGAppenderBundle> bundle = m_bundle.lock()) {
    if (std::shared_ptr<LOGErrorHandler> owner = bundle->find(handler)) return owner;
  }
  return std::shared_ptr<LOGErrorHandler>(handler, HandlerOwner());
}

// The former handler is freed after the leaf lock is, because its destructor may be the program's code.
void LOGAppenderSkeleton::storeErrorHandler(LOGErrorHandler* handler) {
  if (handler == getErrorHandler()) return;
  std::shared_ptr<LOGErrorHandler> owner = ownerOf(handler);
  m_errorHandler.store(handler, std::memory_order_release);
  const LOGLeafGuard guard(m_handlerMutex);
  m_ownedErrorHandler.swap(owner);
}

std::shared_ptr<LOGErrorHandler> LOGAppenderSkeleton::errorHandlerShare() const {
  const LOGLeafGuard guard(m_handlerMutex);
  return m_ownedErrorHandler;
}

void LOGAppenderSkeleton::replaceErrorHandler(LOGErrorHandler* handler) {
  if (handler == getErrorHandler()) return;
  if (auto* const owner = std::get_deleter<HandlerOwner>(errorHandlerShare())) owner->givenBack = true;
  storeErrorHandler(handler);
}

void LOGAppenderSkeleton::setErrorHandler(LOGErrorHandler* handler) {
  logContain("LOGAppenderSkeleton::setErrorHandler -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    if (handler != nullptr) storeErrorHandler(handler);
  });
}

const I18NString& LOGAppenderSkeleton::getName() const { return m_name; }

void LOGAppenderSkeleton::setName(const I18NString& name) {
  const LOGGuard guard(*this);
  m_name = name;
}

LOGErrorHandler* LOGAppenderSkeleton::getErrorHandler() const { return m_errorHandler.load(std::memory_order_acquire); }

LOGLayout* LOGAppenderSkeleton::getLayout() const { return m_layout.load(std::memory_order_acquire); }

void LOGAppenderSkeleton::setLayout(LOGLayout* layout) {
  if (layout != nullptr) m_layout.store(layout, std::memory_order_release);
}

LOGAppenderSkeleton* LOGAppenderSkeleton::clone() const {
  VRKAssertError::raise("VRK_ASSERT_NAMED(FALSE, \"Unable to clone LOGAppenderSkeleton + derived objects.\");",
                        VRK_HERE);
}

void LOGAppenderSkeleton::finalize() {
  if (getClosed() == 1) return;
  appendLastNotices();
  close();
}

bool LOGAppenderSkeleton::operator==(const LOGObject& other) const {
  const auto* const that = dynamic_cast<const LOGAppenderSkeleton*>(&other);
  if (that == nullptr || !LOGObject::operator==(other)) return false;
  const std::shared_ptr<LOGErrorHandler> mine = errorHandlerShare();
  const std::shared_ptr<LOGErrorHandler> theirs = that->errorHandlerShare();
  const bool sameHandler = mine == theirs || (mine != nullptr && theirs != nullptr && *mine == *theirs);
  return sameHandler && m_name == that->m_name && getClosed() == that->getClosed() &&
         getLayout() == that->getLayout() && m_headFilter == that->m_headFilter && m_tailFilter == that->m_tailFilter &&
         getThreshold() == that->getThreshold();
}

bool LOGAppenderSkeleton::operator!=(const LOGObject& other) const { return !(*this == other); }
