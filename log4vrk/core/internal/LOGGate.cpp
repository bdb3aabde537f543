#include "log4vrk/core/internal/LOGGate.h"

#include <algorithm>
#include <chrono>

#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/core/internal/LOGWaiting.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/VRKThreadCriticalSection.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKAsymmetricFence.h"
#include "log4vrk/platform/internal/VRKFork.h"
#include "log4vrk/platform/internal/VRKMutex.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds LONGEST_WAIT_OUTSIDE{2000};
constexpr milliseconds LONGEST_ATTEMPT_TO_CLOSE{50};
constexpr milliseconds LONGEST_WAIT_TO_CLOSE{10000};
constexpr milliseconds SHORTEST_WAIT_AT_BACK{1000};  // when all the time has gone by at the front
constexpr long REST_BETWEEN_ATTEMPTS = 1000;         // microseconds

std::atomic<const LOGGate::Thread*> g_closer{nullptr};  // of the front
std::atomic<bool> g_backClosed{false};                  // while the process forks
VRKMutex g_closing;  // held for as long as the gate is closed; nothing else is locked by those who wait for it
int g_closures = 0;  // the closer's

using Flag = std::atomic<bool> LOGGate::Thread::*;

bool othersAreOut(const LOGGate::Thread& self, Flag flag) {
  return !LOGThreadState::any(
      [&](const LOGThreadState& state) { return &state.gate != &self && (state.gate.*flag).load(); });
}

// Shuts the others out with `shut` and lets them in again with `letIn`, until none of them is inside or the time is
// over. The rests in between are needed: somebody inside may be waiting for somebody outside.
template <typename Shut, typename LetIn>
void closeUntil(Clock::time_point deadline, const LOGGate::Thread& self, Flag flag, Shut shut, LetIn letIn) {
  for (;;) {
    shut();
    VRKAsymmetricFence::order();
    const Clock::time_point attempt = std::min(Clock::now() + LONGEST_ATTEMPT_TO_CLOSE, deadline);
    if (logWaitUntil(attempt, [&] { return othersAreOut(self, flag); })) return;
    if (Clock::now() >= deadline) return;
    letIn();
    const VRKNoCancellation finished;
    try {
      VRKThread::sleep(REST_BETWEEN_ATTEMPTS);
    } catch (const VRKThrowable&) {
      // Then it tries again at once.
    }
  }
}

bool mayEnter(const LOGGate::Thread& self) {
  if (self.atBack) return !g_backClosed.load();
  const LOGGate::Thread* const closer = g_closer.load();
  return closer == nullptr || closer == &self;
}

// While the thread waits its flag is down, or the closer would wait for it.
[[gnu::cold]] void waitOutside(LOGGate::Thread& self) {
  logWaitFor(LONGEST_WAIT_OUTSIDE, [&] {
    self.flag().store(false, std::memory_order_release);
    logNap();
    VRKAsymmetricFence::store(self.flag(), true);
    return mayEnter(self);
  });
}

bool closesAlready(const LOGGate::Thread& self) { return g_closer.load() == &self; }

// With the lock, or by the closer.
void closeFront(LOGGate::Thread& self, Clock::time_point deadline) {
  if (closesAlready(self)) {
    ++g_closures;
    return;
  }
  g_closures = 1;
  closeUntil(
      deadline, self, &LOGGate::Thread::inFront, [&] { g_closer.store(&self); }, [] { g_closer.store(nullptr); });
}

void closeBack(const LOGGate::Thread& self, Clock::time_point deadline) {
  closeUntil(
      deadline, self, &LOGGate::Thread::inBack, [] { g_backClosed = true; }, [] { g_backClosed = false; });
}

// Returns until when it would have waited.
Clock::time_point close(LOGGate::Thread& self) VRK_NO_THREAD_SAFETY_ANALYSIS {
  if (!closesAlready(self)) g_closing.lock();
  const Clock::time_point deadline = Clock::now() + LONGEST_WAIT_TO_CLOSE;
  closeFront(self, deadline);
  return deadline;
}

void open() VRK_NO_THREAD_SAFETY_ANALYSIS {
  if (--g_closures != 0) return;
  g_closer.store(nullptr);
  g_closing.unlock();
}

LOGGate::Thread& currentThread() { return LOGThreadState::current().gate; }

// Waiting there for the others would be waiting for oneself.
bool isInside() { return currentThread().passes > 0; }

void closeToAll() {
  LOGGate::Thread& self = currentThread();
  const Clock::time_point deadline = close(self);
  closeBack(self, std::max(deadline, Clock::now() + SHORTEST_WAIT_AT_BACK));
}

// False, with nothing closed, when somebody else has the gate closed for all the time.
bool closeToAllUntil(Clock::time_point deadline) VRK_NO_THREAD_SAFETY_ANALYSIS {
  LOGGate::Thread& self = currentThread();
  if (!closesAlready(self) && !logWaitUntil(deadline, [] { return g_closing.tryLock(); })) return false;
  closeFront(self, deadline);
  closeBack(self, deadline);
  return true;
}

void openToAll() {
  g_backClosed = false;
  open();
}

void beforeFork() {
  if (!isInside()) closeToAll();
  LOGThreadState::prepareFork();
}

void afterForkInParent() {
  LOGThreadState::finishForkInParent();
  if (!isInside()) openToAll();
}

// Who had not come out after all that time was stuck in an appender's code or in a write, and its locks guard nothing
// half-changed. Where the gate was not closed that is not known.
void afterForkInChild() {
  LOGThreadState::finishForkInChild();
  if (isInside()) return;
  VRKThreadCriticalSection::freeInChild();
  openToAll();
}

[[maybe_unused]] const bool g_watched = (LOGGate::watchForks(), true);

}  // namespace

void LOGGate::goIn(Thread& thread) {
  if (thread.passes++ > 0) return;
  thread.atBack = thread.serves;
  VRKAsymmetricFence::store(thread.flag(), true);
  if (!mayEnter(thread)) waitOutside(thread);
}

void LOGGate::goOut(Thread& thread) {
  if (--thread.passes == 0) thread.flag().store(false, std::memory_order_release);
}

LOGGate::Pass::Pass() : Pass(LOGThreadState::current()) {}

LOGGate::Pass::Pass(LOGThreadState& thread) : m_thread(thread.gate) { goIn(m_thread); }

LOGGate::Pass::~Pass() { goOut(m_thread); }

LOGGate::TryPass::TryPass() : m_thread(currentThread()) {
  m_thread.atBack = false;
  VRKAsymmetricFence::store(m_thread.flag(), true);
  m_inside = mayEnter(m_thread);
  if (m_inside) {
    ++m_thread.passes;
  } else {
    m_thread.flag().store(false, std::memory_order_release);
  }
}

LOGGate::TryPass::~TryPass() {
  if (m_inside) goOut(m_thread);
}

LOGGate::Closure::Closure() { close(currentThread()); }

LOGGate::Closure::~Closure() { open(); }

LOGGate::FullClosure::FullClosure(Clock::time_point until) : m_closed(!isInside() && closeToAllUntil(until)) {}

LOGGate::FullClosure::~FullClosure() {
  if (m_closed) openToAll();
}

void LOGGate::watchForks() {
  static const bool registered = (vrkAtFork(&beforeFork, &afterForkInParent, &afterForkInChild), true);
  static_cast<void>(registered);
}
