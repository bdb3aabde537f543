#include "log4vrk/core/internal/LOGWaiting.h"

#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

namespace {

constexpr long NAP = 50;  // microseconds

}  // namespace

void logNap() {
  const VRKNoCancellation finished;  // half-way through a wait the thread holds what others wait for
  try {
    VRKThread::sleep(NAP);
  } catch (const VRKThrowable&) {
    // Then it looks again at once.
  }
}
