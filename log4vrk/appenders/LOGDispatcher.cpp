#include "log4vrk/appenders/LOGDispatcher.h"

#include "log4vrk/appenders/LOGAsyncAppender.h"
#include "log4vrk/appenders/LOGBoundedFIFO.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGAppenderList.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/core/internal/LOGWaiting.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKStackSize.h"

namespace {

// How often the thread, when it ends, tries again to deliver what it has put off. A logger that is in use all that time
// may be waiting for this very thread to end.
constexpr int LAST_ATTEMPTS = 100;
// How many events at most are collected for one write to the kernel. There is a limit because a fork waits for them.
constexpr int MOST_AT_ONCE = 512;

void rest(LOGPolling& polling) {
  try {
    polling.wait();
  } catch (const VRKThrowable&) {
    // Then it looks again at once.
  }
}

}  // namespace

LOGDispatcher::LOGDispatcher(std::shared_ptr<LOGBoundedFIFO> queue, LOGAsyncAppender* container)
    : VRKThread(VRK_STACK_SIZE), m_bf(std::move(queue)), m_container(containerOf(container)) {}

std::shared_ptr<LOGAppenderAttachableImpl> LOGDispatcher::containerOf(LOGAsyncAppender* m_container) {
  VRK_ASSERT(m_container);
  return m_container->m_aai;
}

LOGDispatcher::~LOGDispatcher() { join(); }

void LOGDispatcher::close() {
  VRK_ASSERT(m_bf);
  m_interrupted = 1;
  join();
}

void LOGDispatcher::closeItself() {
  m_deletesItself = true;
  m_interrupted = 1;
}

// The queue is closed only when no log call waits for space any more, and the thread ends only when it is empty: so
// everything that was accepted is delivered.
void LOGDispatcher::run() {
  VRK_ASSERT(m_bf);
  m_bf->servedBy = m_threadId = VRKThread::currentThreadId();
  const LOGDeferral::DispatcherThread here;
  LOGPolling polling;
  for (bool closed = false;;) {
    if (!closed && m_interrupted != 0 && m_bf->waiting == 0) {
      m_bf->close();
      closed = true;
    }
    const bool delivered = deliverSome();
    LOGDeferral::deliverPutOff();
    if (delivered) {
      polling.reset();
    } else if (closed && m_bf->length() == 0) {
      break;
    } else {
      rest(polling);
    }
  }
  for (int attempt = 0; !LOGDeferral::deliverPutOff() && attempt < LAST_ATTEMPTS; ++attempt) rest(polling);
  if (m_deletesItself) delete this;
}

namespace {

// For its life the appenders of a list may hold back what the thread appends.
class HoldingBack {
 public:
  explicit HoldingBack(const LOGAppenderList& list) : m_list(list) {
    for (const LOGAppenderList::Attached& each : list.attached) {
      const LOGAppenderInternals* const internals = LOGAppenderInternals::of(*each.appender);
      const bool holdsBack = internals != nullptr && internals->holdBack != nullptr;
      if (holdsBack) internals->holdBack(*each.appender);
      m_all = m_all && holdsBack;
    }
  }
  ~HoldingBack() {
    for (const LOGAppenderList::Attached& each : m_list.attached) {
      const LOGAppenderInternals* const internals = LOGAppenderInternals::of(*each.appender);
      if (internals != nullptr && internals->release != nullptr) internals->release(*each.appender);
    }
  }
  HoldingBack(const HoldingBack&) = delete;
  HoldingBack& operator=(const HoldingBack&) = delete;

  bool all() const { return m_all; }

 private:
  const LOGAppenderList& m_list;
  bool m_all = true;
};

}  // namespace

// Delivers a batch, which is more than one event only when all appenders can hold back for one write. The list of
// appenders stays in use for the whole batch: whoever removes an appender waits until it has been released. Without
// appenders the events are taken from the queue and gone.
bool LOGDispatcher::deliverSome() {
  const LOGGate::Pass inside;
  if (!m_bf->hasNext()) return false;
  static const LOGAppenderList& none = vrkImmortal<LOGAppenderList>(std::vector<LOGAppenderList::Attached>());
  LOGThreadState& thread = LOGThreadState::current();
  std::uint64_t delivered = 0;
  {
    const LOGDeferral deferral(thread);
    const LOGAppenderUse use(thread.uses.delivering, m_container->place());
    const LOGAppenderList& list = use.list() != nullptr ? *use.list() : none;
    const HoldingBack held(list);
    const std::uint64_t most = held.all() ? MOST_AT_ONCE : 1;
    while (LOGLoggingEvent* const event = next()) {
      deliver(event, list, thread);
      if (++delivered == most || LOGDeferral::hasPutOff()) break;
    }
  }
  m_bf->delivered.fetch_add(delivered);
  return delivered > 0;
}

LOGLoggingEvent* LOGDispatcher::next() {
  LOGLoggingEvent* const event = m_bf->get(m_event);
  m_object.reset(event != &m_event ? event : nullptr);
  if (event != nullptr && m_bf->hasFreedSpace()) LOGLogLog::debug("Notifying AsyncAppender about freed space.");
  return event;
}

void LOGDispatcher::deliver(LOGLoggingEvent* event, const LOGAppenderList& list, LOGThreadState& thread) {
  try {
    list.append(event, thread, m_container->place());
  } catch (VRKThrowable& error) {
    LOGLogLog::error(error);
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    // The appender's doAppend() has written its line, and the next event is not to blame.
  }
  m_object.reset();
}
