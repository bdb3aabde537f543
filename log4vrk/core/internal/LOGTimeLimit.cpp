#include "log4vrk/core/internal/LOGTimeLimit.h"

#include <algorithm>
#include <atomic>

#include "log4vrk/core/internal/LOGThreadState.h"

namespace {

std::atomic<const LOGThreadState*> g_thread{nullptr};  // whose limit it is
std::atomic<LOGTimeLimit::Clock::rep> g_until{0};

}  // namespace

LOGTimeLimit::LOGTimeLimit(std::chrono::milliseconds limit) {
  g_until = (Clock::now() + limit).time_since_epoch().count();
  g_thread = &LOGThreadState::current();
}

LOGTimeLimit::~LOGTimeLimit() { g_thread = nullptr; }

bool LOGTimeLimit::isSet() { return g_thread.load() == &LOGThreadState::current(); }

LOGTimeLimit::Clock::time_point LOGTimeLimit::until(Clock::duration longest) {
  const Clock::time_point end = Clock::now() + longest;
  return isSet() ? std::min(end, Clock::time_point(Clock::duration(g_until.load()))) : end;
}
