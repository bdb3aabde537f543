#include "log4vrk/core/LOGGate.h"

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGThreadState.h"
#include "log4vrk/platform/VRKFork.h"
#include "log4vrk/platform/VRKMutex.h"
#include "log4vrk/platform/VRKNoCancellation.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/VRKThreadExit.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

// Waiting is a matter of milliseconds, so it is done by looking again. All in microseconds.
constexpr long LOOK_AGAIN = 50;
constexpr long LONGEST_WAIT_OUTSIDE = 2000000;
constexpr long LONGEST_ATTEMPT_TO_CLOSE = 50000;
constexpr long LONGEST_WAIT_TO_CLOSE = 10000000;
constexpr long REST_BETWEEN_ATTEMPTS = 1000;

std::atomic<LOGThreadState*> g_threads{nullptr};
std::atomic<LOGThreadState*> g_closer{nullptr};
VRKMutex g_closing;  // held for as long as the gate is closed; nothing else is locked by those who wait for it
int g_closures = 0;  // the closer's

thread_local LOGThreadState* t_state = nullptr;

void rest(long microseconds) {
  const VRKNoCancellation finished;
  try {
    VRKThread::sleep(microseconds);
  } catch (const VRKThrowable&) {
    // Then it looks again at once.
  }
}

void release(void* value) {
  auto* const state = static_cast<LOGThreadState*>(value);
  state->forget();
  t_state = nullptr;
  state->used.store(false, std::memory_order_release);
}

LOGThreadState* takeOver() {
  for (LOGThreadState* state = g_threads.load(); state != nullptr; state = state->next) {
    bool used = false;
    if (state->used.compare_exchange_strong(used, true)) return state;
  }
  auto* const made = new LOGThreadState;
  made->next = g_threads.load();
  while (!g_threads.compare_exchange_weak(made->next, made)) {
  }
  return made;
}

bool othersAreOut(const LOGThreadState& self) {
  for (LOGThreadState* state = g_threads.load(); state != nullptr; state = state->next) {
    if (state != &self && state->inside.load()) return false;
  }
  return true;
}

bool waitForOthers(const LOGThreadState& self) {
  for (long waited = 0; waited < LONGEST_ATTEMPT_TO_CLOSE; waited += LOOK_AGAIN) {
    if (othersAreOut(self)) return true;
    rest(LOOK_AGAIN);
  }
  return false;
}

void enter(LOGThreadState& self) {
  self.inside.store(true);
  for (long waited = 0; waited < LONGEST_WAIT_OUTSIDE; waited += LOOK_AGAIN) {
    LOGThreadState* const closer = g_closer.load();
    if (closer == nullptr || closer == &self) return;
    self.inside.store(false, std::memory_order_release);
    rest(LOOK_AGAIN);
    self.inside.store(true);
  }
}

void close(LOGThreadState& self) VRK_NO_THREAD_SAFETY_ANALYSIS {
  if (g_closer.load() == &self) {
    ++g_closures;
    return;
  }
  g_closing.lock();
  g_closures = 1;
  for (long waited = 0; waited < LONGEST_WAIT_TO_CLOSE; waited += LONGEST_ATTEMPT_TO_CLOSE) {
    g_closer.store(&self);
    if (waitForOthers(self)) return;
    // Somebody inside may be waiting for somebody outside.
    g_closer.store(nullptr);
    rest(REST_BETWEEN_ATTEMPTS);
  }
  g_closer.store(&self);
}

void open() VRK_NO_THREAD_SAFETY_ANALYSIS {
  if (--g_closures != 0) return;
  g_closer.store(nullptr);
  g_closing.unlock();
}

// A fork from inside a library call has to do without: waiting there for the others would be waiting for oneself.
bool forksFromInside() { return LOGThreadState::current().passes > 0; }

void beforeFork() {
  if (!forksFromInside()) close(LOGThreadState::current());
}

void afterForkInParent() {
  if (!forksFromInside()) open();
}

void afterForkInChild() {
  LOGThreadState& self = LOGThreadState::current();
  for (LOGThreadState* state = g_threads.load(); state != nullptr; state = state->next) {
    if (state == &self) continue;
    state->forget();
    state->inside = false;
    state->used = false;
  }
  if (!forksFromInside()) open();
}

[[maybe_unused]] const bool g_watched = (LOGGate::watchForks(), true);

}  // namespace

LOGThreadState& LOGThreadState::current() {
  if (t_state == nullptr) {
    static VRKThreadExit& exit = vrkImmortal<VRKThreadExit>(&release);
    t_state = takeOver();
    exit.set(t_state);
  }
  return *t_state;
}

void LOGThreadState::forget() {
  passes = calls = renders = 0;
  delivering = false;
  taken = 0;
  deferred.clear();
  context.reset();
}

LOGGate::Pass::Pass() : m_thread(LOGThreadState::current()) {
  if (m_thread.passes++ == 0) enter(m_thread);
}

LOGGate::Pass::~Pass() {
  if (--m_thread.passes == 0) m_thread.inside.store(false, std::memory_order_release);
}

LOGGate::Closure::Closure() { close(LOGThreadState::current()); }

LOGGate::Closure::~Closure() { open(); }

void LOGGate::watchForks() {
  static const bool registered = (vrkAtFork(&beforeFork, &afterForkInParent, &afterForkInChild), true);
  static_cast<void>(registered);
}
