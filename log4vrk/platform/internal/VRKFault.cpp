#include "log4vrk/platform/internal/VRKFault.h"

#include <csignal>

namespace {

struct Plan {
  std::atomic<int> skip;
  std::atomic<int> times;
};

Plan g_plans[VRKFault::POINTS];

// Counts down to 0 and no further, however many threads come at once.
bool takeOne(std::atomic<int>& counter) {
  int left = counter.load();
  while (left > 0) {
    if (counter.compare_exchange_weak(left, left - 1)) return true;
  }
  return false;
}

}  // namespace

std::atomic<bool> VRKFault::m_armed{false};

void VRKFault::arm(Point point, int times, int skip) {
  g_plans[point].skip = skip;
  g_plans[point].times = times;
  m_armed = true;
}

void VRKFault::disarm() {
  m_armed = false;
  for (Plan& plan : g_plans) plan.skip = plan.times = 0;
}

void VRKFault::die() { ::raise(SIGKILL); }

bool VRKFault::take(Point point) {
  Plan& plan = g_plans[point];
  return !takeOne(plan.skip) && takeOne(plan.times);  // in this order: those that are skipped come first
}
