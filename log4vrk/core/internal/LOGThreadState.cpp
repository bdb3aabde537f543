#include "log4vrk/core/internal/LOGThreadState.h"

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGWaiting.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKMutex.h"
#include "log4vrk/platform/internal/VRKThreadExit.h"

namespace {

// What ended threads have left. A stack of its own, so that a thread that starts does not look through the states of
// all that are alive. It needs no memory, since a thread has to be able to end without any.
VRKMutex g_freeMutex;
LOGThreadState* g_free VRK_GUARDED_BY(g_freeMutex) = nullptr;

}  // namespace

std::atomic<LOGThreadState*> LOGThreadState::s_all{nullptr};
__thread LOGThreadState* LOGThreadState::s_current = nullptr;

LOGThreadState* LOGThreadState::take() {
  {
    const VRKMutexGuard guard(g_freeMutex);
    if (LOGThreadState* const state = g_free) {
      g_free = state->m_nextFree;
      return state;
    }
  }
  exit();
  auto* const state = new LOGThreadState;
  state->m_next = s_all.load();
  while (!s_all.compare_exchange_weak(state->m_next, state)) {
  }
  return state;
}

void LOGThreadState::keep(LOGThreadState* state) {
  if (state == nullptr) return;
  const VRKMutexGuard guard(g_freeMutex);
  state->m_nextFree = g_free;
  g_free = state;
}

VRKThreadExit& LOGThreadState::exit() {
  static VRKThreadExit& exit = vrkImmortal<VRKThreadExit>(&leave);
  return exit;
}

// Needs no memory where there is a state.
void LOGThreadState::begin(LOGThreadState* state) {
  s_current = state;
  exit().set(state);
}

LOGThreadState& LOGThreadState::make() {
  begin(take());
  return *s_current;
}

LOGThreadState& LOGThreadState::waitForCurrent() {
  for (;;) {
    try {
      return current();
    } catch (const std::bad_alloc&) {
      logNap();
    }
  }
}

// Runs when the thread ends, after its other destructors.
void LOGThreadState::leave(void* value) {
  auto* const state = static_cast<LOGThreadState*>(value);
  state->forget();
  s_current = nullptr;
  keep(state);
}

void LOGThreadState::forget() {
  gate.forget();
  deferral.forget();
  name.forget();
  context = LOGThreadContext();
  fields.limitMemory(0);
  renderers.clear();
  patterns.reset();
  jsons.reset();
}

void LOGThreadState::prepareFork() VRK_NO_THREAD_SAFETY_ANALYSIS { g_freeMutex.lock(); }

void LOGThreadState::finishForkInParent() VRK_NO_THREAD_SAFETY_ANALYSIS { g_freeMutex.unlock(); }

void LOGThreadState::finishForkInChild() VRK_NO_THREAD_SAFETY_ANALYSIS {
  LOGThreadState& self = current();
  self.name.forget();
  self.patterns.reset();  // they know its name
  self.jsons.reset();     // and these the process
  for (LOGThreadState* state = s_all.load(); state != nullptr; state = state->m_next) {
    if (state == &self) continue;
    state->gate.inFront = state->gate.inBack = false;
    state->uses.delivering = state->uses.looking = nullptr;
  }
  g_freeMutex.unlock();
}
