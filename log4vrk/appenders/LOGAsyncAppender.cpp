#include "log4vrk/appenders/LOGAsyncAppender.h"

#include "log4vrk/appenders/LOGBoundedFIFO.h"
#include "log4vrk/appenders/LOGDispatcher.h"
#include "log4vrk/appenders/LOGEventPool.h"
#include "log4vrk/appenders/LOGPolling.h"
#include "log4vrk/core/LOGContainment.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGThreadState.h"
#include "log4vrk/platform/VRKNoCancellation.h"
#include "log4vrk/platform/VRKThread.h"

const I18NString& LOGAsyncAppender::BUFFER_SIZE_OPTION = vrkImmortal<I18NString>("BufferSize");
const I18NString& LOGAsyncAppender::LOCATION_INFO_OPTION = vrkImmortal<I18NString>("LocationInfo");

namespace {

// Counts a log call from before it looks whether the appender is closing until its event is queued.
class Counted {
 public:
  explicit Counted(std::atomic<int>& count) : m_count(count) { ++m_count; }
  ~Counted() { --m_count; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 private:
  std::atomic<int>& m_count;
};

void discard(LOGBoundedFIFO& queue) {
  while (LOGLoggingEvent* const event = queue.get()) delete event;
}

}  // namespace

LOGAsyncAppender::LOGAsyncAppender()
    : LOGAppenderSkeleton(WITHOUT_LOCK),
      m_aai(vrkNew<LOGAppenderAttachableImpl>(VRK_HERE)),
      m_appending(std::make_shared<std::atomic<int>>(0)),
      m_pool(std::make_shared<LOGEventPool>()),
      m_forks(VRKThread::forks()) {
  instance("LOGAsyncAppender");
  setClosed(1);
  vrkTranslateErrors(VRK_HERE, [&] {
    const LOGGuard guard(*this);
    m_queue = std::make_shared<LOGBoundedFIFO>(DEFAULT_BUFFER_SIZE);
    m_bf = m_queue.get();
    m_dispatcher = std::make_unique<LOGDispatcher>(m_queue, this);
  });
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
  return m_queue;
}

void LOGAsyncAppender::activateOptions() {
  if (getClosed() == 0 && m_forks == VRKThread::forks()) return;
  const LOGGuard guard(*this);
  if (getClosed() == 0 && m_forks == VRKThread::forks()) return;
  VRK_ASSERT(m_dispatcher);
  start();
}

// In a forked child the dispatcher is the parent's, and so is what is queued.
void LOGAsyncAppender::start() {
  if (m_forks != VRKThread::forks()) {
    discard(*m_queue);
    m_pool = std::make_shared<LOGEventPool>();  // the parent's may have been caught in the middle of a step
    *m_appending = 0;
    m_dispatcher = std::make_unique<LOGDispatcher>(m_queue, this);
    m_forks = VRKThread::forks();
  }
  m_dispatcher->start();
  setClosed(0);
}

void LOGAsyncAppender::append(LOGLoggingEvent* event) {
  VRK_ASSERT(event);
  if (getClosed() == 0) activateOptions();
  const Counted counted(*m_appending);
  if (m_closing) {
    reportClosed();
    return;
  }
  logContain({"LOGAsyncAppender::addAppender --- ", "LOGAsyncAppender::addAppender --- ",
              "LOGAsyncAppender::addAppender --- An unknown exception has occurred."},
             [&] {
               if (m_locationInfo != 0) {
                 event->getLocationInformation();
                 event->getThreadName();
                 event->getNDC();
               }
               enqueue(event);
             });
}

// A copy in the event that the thread has kept from its last call.
std::unique_ptr<LOGLoggingEvent> LOGAsyncAppender::copyOf(const LOGLoggingEvent& event) {
  std::unique_ptr<LOGLoggingEvent> copy = std::move(LOGThreadState::current().spareEvent);
  if (copy) {
    *copy = event;
  } else {
    copy = std::make_unique<LOGLoggingEvent>(event);
  }
  return copy;
}

// Waits for space without a lock. There is none to wait for in a queue of size 0, without a dispatcher, and for an event that a
// dispatcher itself had put off: then the queue says that it is full.
void LOGAsyncAppender::enqueue(LOGLoggingEvent* event) {
  VRK_ASSERT(m_bf);
  LOGBoundedFIFO& queue = *m_bf;
  std::unique_ptr<LOGLoggingEvent> copy = copyOf(*event);
  LOGPolling polling;
  for (;;) {
    const bool neverWaits = queue.getMaxSize() == 0 || getClosed() != 0 || LOGDeferral::mustNotWait();
    if (put(queue, copy, neverWaits) || neverWaits) return;
    if (polling.beginsPeriod()) LOGLogLog::debug("Waiting for free space in buffer, ");
    try {
      polling.waitShortly();
    } catch (const VRKThrowable&) {
      LOGLogLog::warn(m_interrupted.exchange(1) == 0 ? "AsyncAppender interrupted."
                                                     : "AsyncAppender interrupted again.");
    }
  }
}

// Tests and puts in one step, because another thread may resize the queue or fill it. What the dispatcher has done with is taken in
// exchange, for the thread's next event.
bool LOGAsyncAppender::put(LOGBoundedFIFO& queue, std::unique_ptr<LOGLoggingEvent>& event, bool evenIfFull) {
  std::unique_ptr<LOGLoggingEvent> spare;
  {
    const LOGLeafGuard guard(m_putting);
    if ((queue.isFullToPut() && !evenIfFull) || !queue.put(event.get())) return false;
    static_cast<void>(event.release());
    spare = m_pool->take();
  }
  LOGThreadState::current().spareEvent = std::move(spare);
  return true;
}

// No lock is held while the dispatcher finishes: what it delivers to may want any of them.
void LOGAsyncAppender::close() {
  std::unique_ptr<LOGDispatcher> dispatcher;
  logContain("LOGAsyncAppender::close --- ", [&] { dispatcher = takeDispatcher(); });
  if (dispatcher) finish(std::move(dispatcher));
}

std::unique_ptr<LOGDispatcher> LOGAsyncAppender::takeDispatcher() {
  const LOGGuard guard(*this);
  if (getClosed() != 0) return nullptr;
  setClosed(1);
  m_closing = true;
  VRK_ASSERT(m_dispatcher);
  return std::move(m_dispatcher);
}

void LOGAsyncAppender::finish(std::unique_ptr<LOGDispatcher> dispatcher) {
  logContain({"LOGAsyncAppender::close --- ", "LOGAsyncAppender::close --- ",
              "Got an Exception while waiting for the dispatcher to finish."},
             [&] {
               if (dispatcher->isItself()) {
                 dispatcher.release()->closeItself();
               } else {
                 dispatcher->close();
               }
             });
  logContain({"LOGAsyncAppender::close --- ", "LOGAsyncAppender::close --- ",
              "LOGAsyncAppender::close --- An unknown exception has occured."},
             [&] {
               dispatcher.reset();
               const LOGGuard guard(*this);
               m_bf = nullptr;
               m_queue.reset();
             });
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
    const LOGAppenderAttachableImpl::Snapshot kept = attached();  // what is removed may be freed: after the lock
    const LOGGuard guard(*m_aai);
    result = operation(*m_aai);
  });
  return result;
}

LOGAppenderAttachableImpl::Snapshot LOGAsyncAppender::attached() {
  const LOGGuard guard(*m_aai);
  return m_aai->snapshot();
}

bool LOGAsyncAppender::reaches(const LOGAppenderSkeleton* target) {
  if (target == this) return true;
  for (const LOGAppenderAttachableImpl::Attached& each : attached()) {
    auto* const nested = dynamic_cast<LOGAsyncAppender*>(each.appender);
    if (nested != nullptr && nested->reaches(target)) return true;
  }
  return false;
}

void LOGAsyncAppender::addAppender(LOGAppenderSkeleton* newAppender) {
  // A ring would feed itself for ever, and its closing would wait for itself.
  auto* const nested = dynamic_cast<LOGAsyncAppender*>(newAppender);
  if (nested != nullptr && nested->reaches(this)) return;
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

void LOGAsyncAppender::removeAllAppenders() {
  logContain({"LOGAsyncAppender::removeAllAppenders --- ", "LOGAsyncAppender::removeAllAppenders --- ",
              "LOGAsyncAppender::removeAllAppenders --- An unknown exception has occurred."},
             [&] {
               const LOGCallScope scope;
               const LOGAppenderAttachableImpl::Snapshot appenders = attached();
               LOGAppenderAttachableImpl::closeAll(appenders);
               const LOGGuard guard(*m_aai);
               m_aai->forget(appenders, nullptr);
             });
}

void LOGAsyncAppender::removeAppender(LOGAppenderSkeleton* appender) {
  withContainer("LOGAsyncAppender::removeAppender --- ",
                "LOGAsyncAppender::removeAppender --- An unknown exception has occurred.",
                [&](LOGAppenderAttachableImpl& container) {
                  container.removeAppender(appender);
                  return true;
                });
}

void LOGAsyncAppender::removeAppender(const I18NString& name) {
  withContainer("LOGAsyncAppender::removeAppender --- ",
                "LOGAsyncAppender::removeAppender --- An unknown exception has occurred.",
                [&](LOGAppenderAttachableImpl& container) {
                  container.removeAppender(name);
                  return true;
                });
}
