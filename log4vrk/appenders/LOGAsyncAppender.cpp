#include "log4vrk/appenders/LOGAsyncAppender.h"

#include <typeinfo>

#include "log4vrk/appenders/LOGDispatcher.h"
#include "log4vrk/appenders/internal/LOGQueueThread.h"
#include "log4vrk/appenders/internal/LOGServedQueues.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGAppenderLists.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGStatementCall.h"
#include "log4vrk/platform/VRKList.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

const I18NString& LOGAsyncAppender::BUFFER_SIZE_OPTION = vrkImmortal<I18NString>("BufferSize");
const I18NString& LOGAsyncAppender::LOCATION_INFO_OPTION = vrkImmortal<I18NString>("LocationInfo");

namespace {

constexpr LOGFailureTexts QUEUE_FAILURES = {"LOGAsyncAppender::addAppender --- ", "LOGAsyncAppender::addAppender --- ",
                                            "LOGAsyncAppender::addAppender --- An unknown exception has occurred.",
                                            LOGFailureTexts::EVENT_IS_LOST};

void discard(LOGBoundedFIFO& queue) {
  while (LOGLoggingEvent* const event = queue.get()) delete event;
}

}  // namespace

const LOGAppenderInternals LOGAsyncAppender::INTERNALS = {&typeid(LOGAsyncAppender),
                                                          true,
                                                          &LOGAsyncAppender::appendFast,
                                                          nullptr,
                                                          nullptr,
                                                          &LOGAsyncAppender::drain,
                                                          &LOGAsyncAppender::appendCall,
                                                          &LOGAsyncAppender::attachedTo};

LOGAsyncAppender::LOGAsyncAppender() : m_aai(vrkNew<LOGAppenderAttachableImpl>(VRK_HERE)), m_forks(VRKThread::forks()) {
  instance("LOGAsyncAppender");
  LOGAppenderInternals::set(*this, INTERNALS);
  setClosed(1);
  vrkTranslateErrors(VRK_HERE, [&] {
    const LOGGuard guard(*this);
    m_queue = std::make_shared<LOGBoundedFIFO>(DEFAULT_BUFFER_SIZE);
    m_bf = m_queue.get();
    m_dispatcher = std::make_unique<LOGLastingDispatcher<LOGDispatcher>>(m_queue, this);
  });
}

LOGAsyncAppender::LOGAsyncAppender(const I18NString& className, const LOGAppenderInternals& internals)
    : m_aai(vrkNew<LOGAppenderAttachableImpl>(VRK_HERE)), m_forks(VRKThread::forks()) {
  instance(className);
  LOGAppenderInternals::set(*this, internals);
  setClosed(1);
}

LOGAsyncAppender::~LOGAsyncAppender() {
  const VRKNoCancellation finished;
  try {
    LOGAsyncAppender::close();
  } catch (...) {
    // close() has written its line.
  }
  if (const std::shared_ptr<LOGBoundedFIFO> leftOver = queue()) discard(*leftOver);
}

std::shared_ptr<LOGBoundedFIFO> LOGAsyncAppender::queue() {
  const LOGGuard guard(*this);
  return m_bf != nullptr ? m_queue : nullptr;
}

// Looks without the lock first, because it is called before every event.
void LOGAsyncAppender::activateOptions() {
  if (getClosed() == 0 && m_forks == VRKThread::forks()) return;
  const LOGGuard guard(*this);
  if (getClosed() == 0 && m_forks == VRKThread::forks()) return;
  VRK_ASSERT(m_dispatcher);
  start();
}

// A forked child has no dispatcher thread, and what is queued is the parent's to deliver. So it begins anew.
void LOGAsyncAppender::start() {
  if (m_forks != VRKThread::forks()) {
    discard(*m_queue);
    auto queue = std::make_shared<LOGBoundedFIFO>(DEFAULT_BUFFER_SIZE);
    queue->resize(m_queue->getMaxSize());
    m_bf = queue.get();
    m_queue = std::move(queue);
    m_dispatcher = std::make_unique<LOGLastingDispatcher<LOGDispatcher>>(m_queue, this);
    m_forks = VRKThread::forks();
  }
  // In this order: a dispatcher that runs is one that close() ends.
  vrkTranslateErrors(VRK_HERE, [queue = m_queue] { LOGServedQueues::add(queue); });
  m_dispatcher->start();
  setClosed(0);
}

void LOGAsyncAppender::append(LOGLoggingEvent* event) {
  VRK_ASSERT(event);
  // Does nothing but in a forked child, which needs a dispatcher of its own.
  if (getClosed() == 0) activateOptions();
  if (m_closing) {
    reportClosed();
    return;
  }
  logContain(QUEUE_FAILURES, [&] {
    if (m_locationInfo != 0) {
      event->getLocationInformation();
      event->getThreadName();
      event->getNDC();
    }
    enqueue(*event);
  });
}

bool LOGAsyncAppender::appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event) {
  auto& self = static_cast<LOGAsyncAppender&>(appender);
  if (!LOGAppenderInternals::admitsFast(self, event)) return false;
  if (self.getClosed() != 0 || self.m_forks != VRKThread::forks()) return false;  // it has to be activated first
  self.LOGAppenderSkeleton::doAppend(event);
  return true;
}

bool LOGAsyncAppender::appendCall(LOGAppenderSkeleton& appender, LOGStatementCall& call) {
  auto& self = static_cast<LOGAsyncAppender&>(appender);
  if (!self.takesCalls()) return false;
  LOGBoundedFIFO* const queue = self.m_bf;
  bool isDone = true;
  logContain(QUEUE_FAILURES, [&] { isDone = queue != nullptr && queue->putCall(call); });
  return isDone;
}

void LOGAsyncAppender::enqueue(const LOGLoggingEvent& event) {
  // Without the lock: the queue lives as long as the appender, and a closed one refuses the event.
  LOGBoundedFIFO* const queue = m_bf;
  std::unique_ptr<LOGLoggingEvent> copy;
  LOGBoundedFIFO::Outcome outcome = queue != nullptr ? queue->putCopy(event, copy) : LOGBoundedFIFO::CLOSED;
  if (outcome == LOGBoundedFIFO::FULL) outcome = waitForSpace(*queue, event, copy);
  if (outcome == LOGBoundedFIFO::CLOSED) reportClosed();
  if (outcome == LOGBoundedFIFO::FULL) LOGBoundedFIFO::reportFull();
}

// There is nothing to wait for when the size is 0 or no dispatcher runs.
LOGBoundedFIFO::Outcome LOGAsyncAppender::waitForSpace(LOGBoundedFIFO& queue, const LOGLoggingEvent& event,
                                                       std::unique_ptr<LOGLoggingEvent>& copy) {
  return LOGServedQueues::waitForSpace(
      queue, m_interrupted, LOGBoundedFIFO::FULL, [&] { return queue.putCopy(event, copy); },
      [&] { return queue.getMaxSize() == 0 || (getClosed() != 0 && !m_closing); });
}

void LOGAsyncAppender::close() {
  std::unique_ptr<LOGDispatcher> dispatcher;
  logContain("LOGAsyncAppender::close --- ", [&] { dispatcher = takeDispatcher(); });
  if (!dispatcher) return;
  LOGServedQueues::finish(std::move(dispatcher), [&] {
    const LOGGuard guard(*this);
    m_bf = nullptr;
  });
}

std::unique_ptr<LOGDispatcher> LOGAsyncAppender::takeDispatcher() {
  const LOGGuard guard(*this);
  if (getClosed() != 0) return nullptr;
  m_closing = true;  // first: a log call that waits for space shall not find a queue that is closed for another reason
  setClosed(1);
  VRK_ASSERT(m_dispatcher);
  return std::move(m_dispatcher);
}

bool LOGAsyncAppender::drain(LOGAppenderSkeleton& appender) {
  auto& self = static_cast<LOGAsyncAppender&>(appender);
  const std::shared_ptr<LOGBoundedFIFO> owned = self.queue();
  if (!owned || self.m_forks != VRKThread::forks() || LOGDeferral::onDispatcher()) return true;
  const bool delivered = LOGServedQueues::drain(*owned, [&] { return self.getClosed() != 0; });
  if (const LOGAppenderLists::Snapshot list = self.attached()) LOGAppenderInternals::drainAll(*list);
  return delivered;
}

void LOGAsyncAppender::setBufferSize(int size) {
  const std::shared_ptr<LOGBoundedFIFO> owned = queue();
  VRK_ASSERT_AS(owned, "VRK_ASSERT(m_bf);", __LINE__);
  owned->resize(size);
}

int LOGAsyncAppender::getBufferSize() {
  const std::shared_ptr<LOGBoundedFIFO> owned = queue();
  VRK_ASSERT_AS(owned, "VRK_ASSERT(m_bf);", __LINE__);
  return owned->getMaxSize();
}

template <typename Operation>
auto LOGAsyncAppender::withContainer(const char* throwableText, const char* unknownText, Operation operation)
    -> decltype(operation(std::declval<LOGAppenderAttachableImpl&>())) {
  decltype(operation(*m_aai)) result{};
  logContain({throwableText, throwableText, unknownText}, [&] {
    const LOGGuard guard(*m_aai);
    result = operation(*m_aai);
  });
  return result;
}

LOGAppenderLists::Snapshot LOGAsyncAppender::attached() {
  const LOGGuard guard(*m_aai);
  return LOGAppenderLists::snapshot(*m_aai);
}

LOGAppenderLists::Snapshot LOGAsyncAppender::attachedTo(LOGAppenderSkeleton& appender) {
  return static_cast<LOGAsyncAppender&>(appender).attached();
}

void LOGAsyncAppender::addAppender(LOGAppenderSkeleton* newAppender) {
  // A ring would feed itself for ever, and its closing would wait for itself.
  if (newAppender != nullptr && LOGAppenderInternals::leadsTo(*newAppender, *this)) return;
  withContainer("LOGAsyncAppender::addAppender --- ",
                "LOGAsyncAppender::addAppender --- An unknown exception has occurred.",
                [&](LOGAppenderAttachableImpl& container) {
                  container.addAppender(newAppender);
                  return true;
                });
}

VRKListIterator<LOGAppenderSkeleton*> LOGAsyncAppender::getAllAppenders() {
  return withContainer("LOGAsyncAppender::getAllAppenders --- ",
                       "LOGAsyncAppender::getAllAppenders --- An unknown exception has occurred.",
                       [](LOGAppenderAttachableImpl& container) { return container.getAllAppenders(); });
}

LOGAppenderSkeleton* LOGAsyncAppender::getAppender(const I18NString& name) {
  return withContainer("LOGAsyncAppender::getAppender --- ",
                       "LOGAsyncAppender::getAppender --- An unknown exception has occurred.",
                       [&](LOGAppenderAttachableImpl& container) { return container.getAppender(name); });
}

bool LOGAsyncAppender::isAttached(LOGAppenderSkeleton* appender) {
  const LOGGuard guard(*m_aai);
  return m_aai->isAttached(appender);
}

// As in a logger: the list changes under the lock, and afterwards those who use an earlier one are waited for.
template <typename Change>
void LOGAsyncAppender::remove(Change change) {
  LOGAppenderUse::Lists earlier;
  {
    const LOGGuard guard(*m_aai);
    change(*m_aai);
    earlier = LOGAppenderLists::takeEarlier(*m_aai);
  }
  LOGAppenderUse::letGo(std::move(earlier));
}

void LOGAsyncAppender::removeAllAppenders() {
  logContain(
      {"LOGAsyncAppender::removeAllAppenders --- ", "LOGAsyncAppender::removeAllAppenders --- ",
       "LOGAsyncAppender::removeAllAppenders --- An unknown exception has occurred."},
      [&] {
        const LOGAppenderLists::Snapshot appenders = attached();
        {
          const LOGCallScope scope;
          LOGAppenderLists::closeAll(appenders);
        }
        remove([&](LOGAppenderAttachableImpl& container) { LOGAppenderLists::forget(container, appenders, nullptr); });
      });
}

constexpr LOGFailureTexts REMOVE_FAILURES = {"LOGAsyncAppender::removeAppender --- ",
                                             "LOGAsyncAppender::removeAppender --- ",
                                             "LOGAsyncAppender::removeAppender --- An unknown exception has occurred."};

void LOGAsyncAppender::removeAppender(LOGAppenderSkeleton* appender) {
  logContain(REMOVE_FAILURES,
             [&] { remove([&](LOGAppenderAttachableImpl& container) { container.removeAppender(appender); }); });
}

void LOGAsyncAppender::removeAppender(const I18NString& name) {
  logContain(REMOVE_FAILURES,
             [&] { remove([&](LOGAppenderAttachableImpl& container) { container.removeAppender(name); }); });
}
