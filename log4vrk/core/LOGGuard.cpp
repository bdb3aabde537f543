#include "log4vrk/core/LOGGuard.h"

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

namespace {

constexpr std::size_t MOST_DEFERRED = 1000;

}  // namespace

LOGCallScope::LOGCallScope() : LOGCallScope(LOGThreadState::current()) {}

LOGCallScope::LOGCallScope(LOGThreadState& thread) : m_deferral(thread), m_pass(thread) {}

LOGCallScope::~LOGCallScope() = default;

LOGDeferral::LOGDeferral() : LOGDeferral(LOGThreadState::current()) {}

LOGDeferral::LOGDeferral(LOGThreadState& thread) : m_thread(thread) { ++m_thread.calls; }

LOGDeferral::~LOGDeferral() {
  if (--m_thread.calls == 0 && m_thread.hasRest) finishRest(m_thread);
}

void LOGDeferral::finishRest(LOGThreadState& thread) {
  const std::vector<LOGDeparture> departures = std::move(thread.departures);
  thread.departures.clear();
  for (const LOGDeparture& departure : departures) LOGGate::waitForBorrowers(*departure.logger);
  if (!thread.deferred.empty() && !thread.delivering && !thread.dispatcher) deliverAll(thread);
  thread.hasRest = !thread.deferred.empty();
}

void LOGDeferral::deliverAll(LOGThreadState& thread) {
  const VRKNoCancellation finished;
  thread.delivering = true;
  while (!thread.deferred.empty()) {
    const LOGDeferredEvent next = std::move(thread.deferred.front());
    thread.deferred.pop_front();
    next.logger->deliver(next.event.get());
  }
  thread.delivering = false;
  thread.taken = 0;
}

void LOGDeferral::depart(const LOGLogger& logger, std::shared_ptr<const void> share) {
  LOGThreadState& thread = LOGThreadState::current();
  thread.departures.push_back({&logger, std::move(share)});
  thread.hasRest = true;
}

bool LOGDeferral::active() { return LOGThreadState::current().calls > 0; }

void LOGDeferral::defer(LOGLogger* logger, const LOGLoggingEvent& event) {
  LOGThreadState& thread = LOGThreadState::current();
  if (thread.taken == MOST_DEFERRED) {
    ++thread.taken;
    LOGLogLog::error("Too many log calls from inside a log call, dropping events.");
  }
  if (thread.taken > MOST_DEFERRED) return;
  try {
    thread.deferred.push_back({logger, std::make_unique<LOGLoggingEvent>(event), logger});
    thread.hasRest = true;
    ++thread.taken;
  } catch (VRKThrowable& error) {
    LOGLogLog::error(error);
  }
}

LOGDeferral::DispatcherThread::DispatcherThread() { LOGThreadState::current().dispatcher = true; }

LOGDeferral::DispatcherThread::~DispatcherThread() {
  LOGThreadState& thread = LOGThreadState::current();
  if (!thread.deferred.empty()) LOGLogLog::error("A dispatcher ended before its own log calls could be delivered.");
  thread.forget();
}

bool LOGDeferral::deliverPutOff() {
  LOGThreadState& thread = LOGThreadState::current();
  thread.delivering = true;
  while (!thread.deferred.empty()) {
    const LOGGate::TryPass pass;
    if (!pass.isInside() || !thread.deferred.front().logger->deliverOn(thread.deferred.front())) break;
    thread.deferred.pop_front();
  }
  thread.delivering = false;
  thread.taken = thread.deferred.size();
  return thread.deferred.empty();
}

bool LOGDeferral::hasPutOff() { return !LOGThreadState::current().deferred.empty(); }

bool LOGDeferral::mustNotWait() {
  const LOGThreadState& thread = LOGThreadState::current();
  return thread.dispatcher && thread.delivering;
}
