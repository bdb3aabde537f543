#include "log4vrk/platform/internal/VRKAsymmetricFence.h"

#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr useconds_t LONG_ENOUGH = 10000;  // in microseconds

bool barrier(int command) { return ::syscall(SYS_membarrier, command, 0, 0) == 0; }

// The thread sanitizer does not know membarrier. It checks the two-sided way, whose order it understands.
bool prepare() {
#ifdef __SANITIZE_THREAD__
  return false;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
  return false;
#endif
#endif
  return barrier(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED);
}

}  // namespace

// Statics of other files may use it before it is set. It is false then, which is the slower way and just as right.
const bool VRKAsymmetricFence::m_oneSided = prepare();

void VRKAsymmetricFence::order() {
  if (!m_oneSided || barrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED)) return;
  // The program has forbidden the system call since the library was loaded, and A still relies on it. A processor makes
  // its stores visible long before this time is over.
  ::usleep(LONG_ENOUGH);
}
