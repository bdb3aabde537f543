#include "log4vrk/appenders/LOGDispatcher.h"

#include "log4vrk/appenders/LOGAsyncAppender.h"
#include "log4vrk/appenders/LOGBoundedFIFO.h"
#include "log4vrk/appenders/internal/LOGQueueThread.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/internal/LOGAppenderList.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKStackSize.h"

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

void LOGDispatcher::run() {
  VRK_ASSERT(m_bf);
  m_bf->servedBy = m_threadId = VRKThread::currentThreadId();
  logServeQueue(
      *m_bf, m_interrupted, [&] { return deliverSome(); }, [&] { return m_bf->length() == 0; });
  if (m_deletesItself) delete this;
}

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
    const LOGHoldingBack held(list);
    const std::uint64_t most = held.all() ? LOG_MOST_AT_ONCE : 1;
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
