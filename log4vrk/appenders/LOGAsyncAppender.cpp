#include "log4vrk/appenders/LOGAsyncAppender.h"

#include <algorithm>
#include <chrono>
#include <typeinfo>
#include <vector>

#include "log4vrk/appenders/LOGDispatcher.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGAppenderLists.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGExitSteps.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/core/internal/LOGTimeLimit.h"
#include "log4vrk/core/internal/LOGWaiting.h"
#include "log4vrk/platform/VRKList.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

const I18NString& LOGAsyncAppender::BUFFER_SIZE_OPTION = vrkImmortal<I18NString>("BufferSize");
const I18NString& LOGAsyncAppender::LOCATION_INFO_OPTION = vrkImmortal<I18NString>("LocationInfo");

namespace {

// When a queue has not been delivered by then, its sink hangs.
constexpr std::chrono::seconds LONGEST_DRAINING{10};

// Counts a log call that waits. The dispatcher does not close the queue before it has made space for all that do:
// close() promises to deliver what was logged before it.
class Counted {
 public:
  explicit Counted(std::atomic<int>& count) : m_count(count) { ++m_count; }
  ~Counted() { --m_count; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 private:
  std::atomic<int>& m_count;
};

// Those who log rely on it, so shortage of memory does not end it.
class LastingDispatcher final : public LOGDispatcher {
 public:
  using LOGDispatcher::LOGDispatcher;

  void start() override {
    if (!m_reserved) m_reserved = std::make_unique<LOGThreadState::Reserved>();
    LOGDispatcher::start();
  }
  void run() override {
    m_reserved->use();
    for (;;) {
      try {
        return LOGDispatcher::run();  // which may delete this object
      } catch (const std::bad_alloc&) {
        logNap();
      }
    }
  }

 private:
  std::unique_ptr<LOGThreadState::Reserved> m_reserved;
};

void discard(LOGBoundedFIFO& queue) {
  while (LOGLoggingEvent* const event = queue.get()) delete event;
}

}  // namespace

// The queues of the process that have a dispatcher, for its exit.
struct LOGAsyncAppender::Started {
  static Started& instance() {
    static Started& all = vrkImmortal<Started>();
    return all;
  }
  void add(const std::shared_ptr<LOGBoundedFIFO>& queue) {
    const LOGLeafGuard guard(mutex);
    // Without those that are gone, and itself: a start that failed comes again.
    const auto isOld = [&](const Queue& each) { return each.fifo.expired() || each.fifo.lock() == queue; };
    queues.erase(std::remove_if(queues.begin(), queues.end(), isOld), queues.end());
    queues.push_back({queue, VRKThread::forks()});
  }
  // Without that of the calling thread, who would wait for itself.
  std::vector<std::shared_ptr<LOGBoundedFIFO>> served() {
    std::vector<std::shared_ptr<LOGBoundedFIFO>> all;
    const LOGLeafGuard guard(mutex);
    for (const Queue& each : queues) {
      std::shared_ptr<LOGBoundedFIFO> fifo = each.fifo.lock();
      const bool served = each.forks == VRKThread::forks() && fifo && fifo->servedBy != VRKThread::currentThreadId();
      if (served) all.push_back(std::move(fifo));
    }
    return all;
  }
  // An event may have to pass several queues, each of which another one leads to: hence the rounds.
  static void deliver(LOGExitSteps::Clock::time_point until) {
    try {
      const std::vector<std::shared_ptr<LOGBoundedFIFO>> all = instance().served();
      for (std::size_t round = 0; round < all.size(); ++round) {
        for (const std::shared_ptr<LOGBoundedFIFO>& fifo : all) {
          const std::uint64_t end = fifo->putSoFar();
          logWaitUntil(until, [&] { return fifo->delivered.load() >= end; });
        }
      }
    } catch (const std::bad_alloc&) {
      // There is no memory even for the list, and nobody left to tell.
    }
  }

  struct Queue {
    std::weak_ptr<LOGBoundedFIFO> fifo;
    unsigned forks;  // of the process whose dispatcher serves it
  };
  VRKMutex mutex;
  std::vector<Queue> queues VRK_GUARDED_BY(mutex);
  const bool deliversAtExit = LOGExitSteps::set(LOGExitSteps::QUEUES, &deliver);
};

const LOGAppenderInternals LOGAsyncAppender::INTERNALS = {
    &typeid(LOGAsyncAppender), true, &LOGAsyncAppender::appendFast, nullptr, nullptr, &LOGAsyncAppender::drain};

LOGAsyncAppender::LOGAsyncAppender() : m_aai(vrkNew<LOGAppenderAttachableImpl>(VRK_HERE)), m_forks(VRKThread::forks()) {
  instance("LOGAsyncAppender");
  LOGAppenderInternals::set(*this, INTERNALS);
  setClosed(1);
  vrkTranslateErrors(VRK_HERE, [&] {
    const LOGGuard guard(*this);
    m_queue = std::make_shared<LOGBoundedFIFO>(DEFAULT_BUFFER_SIZE);
    m_bf = m_queue.get();
    m_dispatcher = std::make_unique<LastingDispatcher>(m_queue, this);
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
    m_dispatcher = std::make_unique<LastingDispatcher>(m_queue, this);
    m_forks = VRKThread::forks();
  }
  // In this order: a dispatcher that runs is one that close() ends.
  vrkTranslateErrors(VRK_HERE, [queue = m_queue] { Started::instance().add(queue); });
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
  logContain({"LOGAsyncAppender::addAppender --- ", "LOGAsyncAppender::addAppender --- ",
              "LOGAsyncAppender::addAppender --- An unknown exception has occurred."},
             [&] {
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

void LOGAsyncAppender::enqueue(const LOGLoggingEvent& event) {
  // Without the lock: the queue lives as long as the appender, and a closed one refuses the event.
  LOGBoundedFIFO* const queue = m_bf;
  std::unique_ptr<LOGLoggingEvent> copy;
  LOGBoundedFIFO::Outcome outcome = queue != nullptr ? queue->putCopy(event, copy) : LOGBoundedFIFO::CLOSED;
  if (outcome == LOGBoundedFIFO::FULL) outcome = waitForSpace(*queue, event, copy);
  if (outcome == LOGBoundedFIFO::CLOSED) reportClosed();
  if (outcome == LOGBoundedFIFO::FULL) LOGBoundedFIFO::reportFull();
}

// Waits without a lock. There is nothing to wait for when the size is 0 or no dispatcher runs. An event that a
// dispatcher itself had put off cannot wait either: that dispatcher may be the one that would have to make space.
LOGBoundedFIFO::Outcome LOGAsyncAppender::waitForSpace(LOGBoundedFIFO& queue, const LOGLoggingEvent& event,
                                                       std::unique_ptr<LOGLoggingEvent>& copy) {
  const Counted waiting(queue.waiting);
  LOGPolling polling;
  for (;;) {
    const bool inVain = queue.getMaxSize() == 0 || (getClosed() != 0 && !m_closing) || LOGDeferral::mustNotWait();
    const LOGBoundedFIFO::Outcome outcome = queue.putCopy(event, copy);
    if (outcome != LOGBoundedFIFO::FULL || inVain) return outcome;
    if (polling.beginsPeriod()) LOGLogLog::debug("Waiting for free space in buffer, ");
    try {
      polling.waitShortly();
    } catch (const VRKThrowable&) {
      LOGLogLog::warn(m_interrupted.exchange(1) == 0 ? "AsyncAppender interrupted."
                                                     : "AsyncAppender interrupted again.");
    }
  }
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
  m_closing = true;  // first: a log call that waits for space shall not find a queue that is closed for another reason
  setClosed(1);
  VRK_ASSERT(m_dispatcher);
  return std::move(m_dispatcher);
}

void LOGAsyncAppender::finish(std::unique_ptr<LOGDispatcher> dispatcher) {
  logContain({"LOGAsyncAppender::close --- ", "LOGAsyncAppender::close --- ",
              "Got an Exception while waiting for the dispatcher to finish."},
             [&] {
               // An appender behind the queue may close it, on the dispatcher's own thread, which cannot wait for
               // itself.
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
             });
}

// Not on a dispatcher's thread: one that drained its own queue would wait for itself, and two could wait for each
// other.
bool LOGAsyncAppender::drain(LOGAppenderSkeleton& appender) {
  auto& self = static_cast<LOGAsyncAppender&>(appender);
  const std::shared_ptr<LOGBoundedFIFO> owned = self.queue();
  if (!owned || self.m_forks != VRKThread::forks() || LOGDeferral::onDispatcher()) return true;
  const std::uint64_t end = owned->putSoFar();
  const bool delivered = logWaitUntil(LOGTimeLimit::until(LONGEST_DRAINING),
                                      [&] { return owned->delivered.load() >= end || self.getClosed() != 0; });
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

bool LOGAsyncAppender::reaches(const LOGAppenderSkeleton* target) {
  if (target == this) return true;
  const LOGAppenderLists::Snapshot list = attached();
  if (!list) return false;
  for (const LOGAppenderList::Attached& each : list->attached) {
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
