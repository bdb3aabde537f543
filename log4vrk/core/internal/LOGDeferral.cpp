#include "log4vrk/core/internal/LOGDeferral.h"

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGCallScope.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

namespace {

constexpr std::size_t MOST_DEFERRED = 1000;

LOGDeferral::Thread& currentThread() { return LOGThreadState::current().deferral; }

}  // namespace

LOGDeferral::Thread::Thread() = default;
LOGDeferral::Thread::~Thread() = default;

void LOGDeferral::Thread::forget() {
  calls = 0;
  delivering = hasRest = false;
  taken = 0;
  events.clear();
  LOGAppenderUse::leave(lists);
}

LOGDeferral::LOGDeferral() : LOGDeferral(LOGThreadState::current()) {}

LOGDeferral::LOGDeferral(LOGThreadState& thread) : m_thread(thread) { begin(thread); }

void LOGDeferral::begin(LOGThreadState& thread) { ++thread.deferral.calls; }

LOGDeferral::~LOGDeferral() { end(m_thread); }

void LOGDeferral::end(LOGThreadState& thread) {
  if (--thread.deferral.calls == 0 && thread.deferral.hasRest) finishRest(thread);
}

LOGCallScope::LOGCallScope() : m_thread(LOGThreadState::current()) {
  LOGDeferral::begin(m_thread);
  LOGGate::goIn(m_thread.gate);
}

LOGCallScope::~LOGCallScope() {
  LOGGate::goOut(m_thread.gate);
  LOGDeferral::end(m_thread);
}

// A thread that serves a queue delivers between two events, see deliverPutOff().
void LOGDeferral::finishRest(LOGThreadState& thread) {
  Thread& rest = thread.deferral;
  LOGAppenderUse::finish(thread, rest.lists);
  if (!rest.events.empty() && !rest.delivering && !thread.gate.serves) deliverAll(thread);
  rest.hasRest = !rest.events.empty() || !rest.lists.empty();
}

void LOGDeferral::deliverAll(LOGThreadState& thread) {
  const VRKNoCancellation finished;
  Thread& rest = thread.deferral;
  rest.delivering = true;
  while (!rest.events.empty()) {
    const LOGDeferredEvent next = std::move(rest.events.front());
    rest.events.pop_front();
    next.logger->deliver(next.event.get());
  }
  rest.delivering = false;
  rest.taken = 0;
}

bool LOGDeferral::active() { return currentThread().calls > 0; }

void LOGDeferral::defer(LOGLogger* logger, const LOGLoggingEvent* event) {
  Thread& thread = currentThread();
  if (thread.taken == MOST_DEFERRED) {
    ++thread.taken;
    LOGLogLog::error("Too many log calls from inside a log call, dropping events.");
  }
  if (thread.taken > MOST_DEFERRED) return;
  try {
    auto copy = event != nullptr ? std::make_unique<LOGLoggingEvent>(*event) : nullptr;
    thread.events.push_back({logger, std::move(copy), logger});
    thread.hasRest = true;
    ++thread.taken;
  } catch (VRKThrowable& error) {
    LOGLogLog::error(error);
  }
}

LOGDeferral::DispatcherThread::DispatcherThread() { LOGThreadState::waitForCurrent().gate.serves = true; }

LOGDeferral::DispatcherThread::~DispatcherThread() {
  LOGThreadState& thread = LOGThreadState::current();
  if (!thread.deferral.events.empty()) {
    LOGLogLog::error("A dispatcher ended before its own log calls could be delivered.");
  }
  thread.forget();
}

bool LOGDeferral::deliverPutOff() {
  Thread& thread = currentThread();
  thread.delivering = true;
  while (!thread.events.empty()) {
    const LOGGate::TryPass pass;
    if (!pass.isInside() || !LOGLogger::deliverOn(thread.events.front())) break;
    thread.events.pop_front();
  }
  thread.delivering = false;
  thread.taken = thread.events.size();
  return thread.events.empty();
}

bool LOGDeferral::hasPutOff() { return !currentThread().events.empty(); }

bool LOGDeferral::onDispatcher() { return LOGThreadState::current().gate.serves; }

bool LOGDeferral::mustNotWait() {
  const LOGThreadState& thread = LOGThreadState::current();
  return thread.gate.serves && thread.deferral.delivering;
}
