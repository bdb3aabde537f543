#include "log4vrk/core/internal/LOGGate.h"

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKAsymmetricFence.h"
#include "log4vrk/platform/internal/VRKFork.h"
#include "log4vrk/platform/internal/VRKMutex.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"
#include "log4vrk/platform/internal/VRKThreadExit.h"

namespace {

// Waiting is a matter of milliseconds, so it is done by looking again. All in microseconds.
constexpr long LOOK_AGAIN = 50;
constexpr long LONGEST_WAIT_OUTSIDE = 2000000;
constexpr long LONGEST_ATTEMPT_TO_CLOSE = 50000;
constexpr long LONGEST_WAIT_TO_CLOSE = 10000000;
constexpr long REST_BETWEEN_ATTEMPTS = 1000;

std::atomic<LOGThreadState*> g_threads{nullptr};
std::atomic<LOGThreadState*> g_closer{nullptr};
std::atomic<bool> g_dispatchersOut{false};  // while the process forks
VRKMutex g_closing;  // held for as long as the gate is closed; nothing else is locked by those who wait for it
int g_closures = 0;  // the closer's

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
  LOGThreadState::s_current = nullptr;
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

using Flag = std::atomic<bool> LOGThreadState::*;

bool othersAreOut(const LOGThreadState& self, Flag flag) {
  for (LOGThreadState* state = g_threads.load(); state != nullptr; state = state->next) {
    if (state != &self && (state->*flag).load()) return false;
  }
  return true;
}

bool waitForOthers(const LOGThreadState& self, Flag flag) {
  for (long waited = 0; waited < LONGEST_ATTEMPT_TO_CLOSE; waited += LOOK_AGAIN) {
    if (othersAreOut(self, flag)) return true;
    rest(LOOK_AGAIN);
  }
  return false;
}

// Shuts the others out with `shut` and lets them in again with `letIn`, until none of them is inside or the time is
// over: somebody inside may be waiting for somebody outside.
template <typename Shut, typename LetIn>
void closeFor(const LOGThreadState& self, Flag flag, Shut shut, LetIn letIn) {
  for (long waited = 0; waited < LONGEST_WAIT_TO_CLOSE; waited += LONGEST_ATTEMPT_TO_CLOSE) {
    shut();
    VRKAsymmetricFence::order();
    if (waitForOthers(self, flag)) return;
    letIn();
    rest(REST_BETWEEN_ATTEMPTS);
  }
  shut();
}

// True when the thread need not wait outside.
bool mayEnter(const LOGThreadState& self) {
  if (self.dispatcher && !self.delivering) return !g_dispatchersOut.load();
  const LOGThreadState* const closer = g_closer.load();
  return closer == nullptr || closer == &self;
}

void waitOutside(LOGThreadState& self, std::atomic<bool>& flag) {
  for (long waited = 0; waited < LONGEST_WAIT_OUTSIDE && !mayEnter(self); waited += LOOK_AGAIN) {
    flag.store(false, std::memory_order_release);
    rest(LOOK_AGAIN);
    VRKAsymmetricFence::store(flag, true);
  }
}

void close(LOGThreadState& self) VRK_NO_THREAD_SAFETY_ANALYSIS {
  if (g_closer.load() == &self) {
    ++g_closures;
    return;
  }
  g_closing.lock();
  g_closures = 1;
  closeFor(
      self, &LOGThreadState::inside, [&] { g_closer.store(&self); }, [] { g_closer.store(nullptr); });
}

void open() VRK_NO_THREAD_SAFETY_ANALYSIS {
  if (--g_closures != 0) return;
  g_closer.store(nullptr);
  g_closing.unlock();
}

// Waiting there for the others would be waiting for oneself.
bool isInside() { return LOGThreadState::current().passes > 0; }

void closeToAll() {
  LOGThreadState& self = LOGThreadState::current();
  close(self);
  closeFor(
      self, &LOGThreadState::serving, [] { g_dispatchersOut = true; }, [] { g_dispatchersOut = false; });
}

void openToAll() {
  g_dispatchersOut = false;
  open();
}

void beforeFork() {
  if (!isInside()) closeToAll();
}

void afterForkInParent() {
  if (!isInside()) openToAll();
}

void afterForkInChild() {
  LOGThreadState& self = LOGThreadState::current();
  self.isNamed = false;
  self.patterns.reset();  // they know its name
  for (LOGThreadState* state = g_threads.load(); state != nullptr; state = state->next) {
    if (state == &self) continue;
    // Left as it is, and never taken over: the fork may have caught its thread, which is gone, in the middle of a
    // change.
    state->inside = state->serving = false;
  }
  afterForkInParent();
}

[[maybe_unused]] const bool g_watched = (LOGGate::watchForks(), true);

}  // namespace

__thread LOGThreadState* LOGThreadState::s_current = nullptr;

LOGThreadState& LOGThreadState::make() {
  static VRKThreadExit& exit = vrkImmortal<VRKThreadExit>(&release);
  s_current = takeOver();
  exit.set(s_current);
  return *s_current;
}

void LOGThreadState::enter() {
  std::atomic<bool>& mine = flag();
  VRKAsymmetricFence::store(mine, true);
  if (!mayEnter(*this)) waitOutside(*this, mine);
}

void LOGThreadState::forget() {
  passes = calls = 0;
  delivering = dispatcher = false;
  hasRest = isNamed = false;
  taken = 0;
  deferred.clear();
  departures.clear();
  renderers.clear();
  patterns.reset();
  context.reset();
}

LOGGate::Pass::Pass() : Pass(LOGThreadState::current()) {}

LOGGate::Pass::Pass(LOGThreadState& thread) : m_thread(thread) { m_thread.goIn(); }

LOGGate::Pass::~Pass() { m_thread.goOut(); }

LOGGate::TryPass::TryPass() : m_thread(LOGThreadState::current()) {
  std::atomic<bool>& flag = m_thread.flag();
  VRKAsymmetricFence::store(flag, true);
  m_inside = mayEnter(m_thread);
  if (m_inside) {
    ++m_thread.passes;
  } else {
    flag.store(false, std::memory_order_release);
  }
}

LOGGate::TryPass::~TryPass() {
  if (m_inside) m_thread.goOut();
}

LOGGate::Closure::Closure() { close(LOGThreadState::current()); }

LOGGate::Closure::~Closure() { open(); }

LOGGate::FullClosure::FullClosure() : m_closed(!isInside()) {
  if (m_closed) closeToAll();
}

LOGGate::FullClosure::~FullClosure() {
  if (m_closed) openToAll();
}

bool LOGGate::waitForBorrowers(const LOGLogger& logger) {
  const LOGThreadState& self = LOGThreadState::current();
  VRKAsymmetricFence::order();
  long waited = 0;
  for (LOGThreadState* thread = g_threads.load(); thread != nullptr; thread = thread->next) {
    while (thread != &self && thread->inside.load() && thread->borrowsFrom.load() == &logger) {
      if (self.calls > 0 && (waited += LOOK_AGAIN) > LONGEST_WAIT_OUTSIDE) return false;
      rest(LOOK_AGAIN);
    }
  }
  return true;
}

void LOGGate::watchForks() {
  static const bool registered = (vrkAtFork(&beforeFork, &afterForkInParent, &afterForkInChild), true);
  static_cast<void>(registered);
}
