#include "log4vrk/core/internal/LOGThreadState.h"

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKMutex.h"
#include "log4vrk/platform/internal/VRKThreadExit.h"

namespace {

// What ended threads have left. A stack of its own, so that a thread that starts does not look through the states of
// all that are alive.
VRKMutex g_freeMutex;
std::vector<LOGThreadState*>& g_free VRK_GUARDED_BY(g_freeMutex) = vrkImmortal<std::vector<LOGThreadState*>>();

LOGThreadState* takeFree() {
  const VRKMutexGuard guard(g_freeMutex);
  if (g_free.empty()) return nullptr;
  LOGThreadState* const state = g_free.back();
  g_free.pop_back();
  return state;
}

}  // namespace

std::atomic<LOGThreadState*> LOGThreadState::s_all{nullptr};
__thread LOGThreadState* LOGThreadState::s_current = nullptr;

LOGThreadState& LOGThreadState::make() {
  static VRKThreadExit& exit = vrkImmortal<VRKThreadExit>(&leave);
  LOGThreadState* state = takeFree();
  if (state == nullptr) {
    state = new LOGThreadState;
    state->m_next = s_all.load();
    while (!s_all.compare_exchange_weak(state->m_next, state)) {
    }
  }
  s_current = state;
  exit.set(state);
  return *state;
}

// Runs when the thread ends, after its other destructors.
void LOGThreadState::leave(void* value) {
  auto* const state = static_cast<LOGThreadState*>(value);
  state->forget();
  s_current = nullptr;
  const VRKMutexGuard guard(g_freeMutex);
  g_free.push_back(state);
}

void LOGThreadState::forget() {
  gate.forget();
  deferral.forget();
  name.forget();
  context = LOGThreadContext();
  renderers.clear();
  patterns.reset();
}

void LOGThreadState::prepareFork() VRK_NO_THREAD_SAFETY_ANALYSIS { g_freeMutex.lock(); }

void LOGThreadState::finishForkInParent() VRK_NO_THREAD_SAFETY_ANALYSIS { g_freeMutex.unlock(); }

void LOGThreadState::finishForkInChild() VRK_NO_THREAD_SAFETY_ANALYSIS {
  LOGThreadState& self = current();
  self.name.forget();
  self.patterns.reset();  // they know its name
  for (LOGThreadState* state = s_all.load(); state != nullptr; state = state->m_next) {
    if (state == &self) continue;
    state->gate.inFront = state->gate.inBack = false;
    state->uses.delivering = state->uses.looking = nullptr;
  }
  g_freeMutex.unlock();
}
