#include "log4vrk/appenders/LOGDispatcher.h"

#include "log4vrk/appenders/LOGAsyncAppender.h"
#include "log4vrk/appenders/LOGBoundedFIFO.h"
#include "log4vrk/appenders/LOGPolling.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

constexpr std::size_t STACK_SIZE = 4096000;
// How often an event that was put off is tried again when the thread ends.
constexpr int LAST_ATTEMPTS = 100;

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
      m_appending(container->appending()) {}

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
  for (;;) {
    // Asked before the queue is looked at: what was put before the interruption is seen.
    const bool last = m_interrupted != 0 && *m_appending == 0;
    const bool delivered = deliverNext();
    LOGDeferral::deliverPutOff();
    if (delivered) {
      polling.reset();
    } else if (last) {
      break;
    } else {
      rest(polling);
    }
  }
  for (int attempt = 0; !LOGDeferral::deliverPutOff() && attempt < LAST_ATTEMPTS; ++attempt) rest(polling);
  if (m_deletesItself) delete this;
}

bool LOGDispatcher::deliverNext() {
  const LOGGate::Pass inside;
  const std::unique_ptr<LOGLoggingEvent> event(m_bf->get());
  if (!event) return false;
  if (m_bf->wasFull()) LOGLogLog::debug("Notifying AsyncAppender about freed space.");
  try {
    const LOGGuard guard(*m_container);
    m_container->appendLoopOnAppenders(event.get());
  } catch (VRKThrowable& error) {
    LOGLogLog::error(error);
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    // The appender's doAppend() has written its line, and the next event is not to blame.
  }
  return true;
}
