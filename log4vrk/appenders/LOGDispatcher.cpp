#include "log4vrk/appenders/LOGDispatcher.h"

#include "log4vrk/appenders/LOGAsyncAppender.h"
#include "log4vrk/appenders/LOGBoundedFIFO.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/internal/LOGPolling.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

constexpr std::size_t STACK_SIZE = 4096000;
// How often an event that was put off is tried again when the thread ends.
constexpr int LAST_ATTEMPTS = 100;
// How many events may be on their way to the kernel together, and how long, therefore, a fork may have to wait.
constexpr int MOST_AT_ONCE = 512;

void rest(LOGPolling& polling) {
  try {
    polling.wait();
  } catch (const VRKThrowable&) {
    // Then it looks again at once.
  }
}

std::shared_ptr<LOGAppenderAttachableImpl> containerOf(LOGAsyncAppender* m_container) {
  VRK_ASSERT(m_container);
  return m_container->container();
}

}  // namespace

LOGDispatcher::LOGDispatcher(std::shared_ptr<LOGBoundedFIFO> queue, LOGAsyncAppender* container)
    : VRKThread(STACK_SIZE),
      m_bf(std::move(queue)),
      m_container(containerOf(container)),
      m_waiting(container->waiting()) {}

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
  m_threadId = VRKThread::currentThreadId();
  const LOGDeferral::DispatcherThread here;
  LOGPolling polling;
  for (bool closed = false;;) {
    if (!closed && m_interrupted != 0 && *m_waiting == 0) {
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

bool LOGDispatcher::deliverSome() {
  const LOGGate::Pass inside;
  m_seen = m_bf->length();
  if (m_seen == 0) return false;
  int delivered = 0;
  try {
    const LOGGuard guard(*m_container);  // before the first event is got, see LOGAsyncAppender::drain()
    const LOGAppenderAttachableImpl::HoldingBack held(*m_container);
    const int most = held.all() ? MOST_AT_ONCE : 1;
    while (LOGLoggingEvent* const event = next()) {
      deliver(event);
      if (++delivered == most || LOGDeferral::hasPutOff()) break;
    }
  } catch (VRKThrowable& error) {
    LOGLogLog::error(error);
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    // The line has been written.
  }
  return delivered > 0;
}

// To ask the queue for its length at every event would cost those who put as much as the rest of it.
LOGLoggingEvent* LOGDispatcher::next() {
  if (m_seen == 0) m_seen = m_bf->length();
  if (m_seen == 0) return nullptr;
  LOGLoggingEvent* const event = m_bf->get(m_event);
  m_object.reset(event != &m_event ? event : nullptr);
  if (event == nullptr) return nullptr;
  if (m_seen-- == m_bf->getMaxSize()) LOGLogLog::debug("Notifying AsyncAppender about freed space.");
  return event;
}

void LOGDispatcher::deliver(LOGLoggingEvent* event) {
  try {
    m_container->appendLoopOnAppenders(event);
  } catch (VRKThrowable& error) {
    LOGLogLog::error(error);
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    // The appender's doAppend() has written its line, and the next event is not to blame.
  }
  m_object.reset();
}
