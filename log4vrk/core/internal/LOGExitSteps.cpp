#include "log4vrk/core/internal/LOGExitSteps.h"

#include <atomic>

namespace {

using std::chrono::milliseconds;

// When each step has to be over, from the beginning of the first. What a step leaves is the next one's.
constexpr milliseconds ENDS[LOGExitSteps::PLACES] = {milliseconds(1200), milliseconds(1800), milliseconds(2000)};

std::atomic<LOGExitSteps::Step> g_steps[LOGExitSteps::PLACES];

// The library is initialised before the program that is linked to it, so this comes after the program's destructors.
__attribute__((destructor)) void runAtExit() {
  const LOGExitSteps::Clock::time_point begin = LOGExitSteps::Clock::now();
  for (int place = 0; place < LOGExitSteps::PLACES; ++place) {
    if (const LOGExitSteps::Step step = g_steps[place]) step(begin + ENDS[place]);
  }
}

}  // namespace

bool LOGExitSteps::set(Place place, Step step) {
  g_steps[place] = step;
  return true;
}
