#include "log4vrk/platform/internal/VRKAsymmetricFence.h"

#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr useconds_t LONG_ENOUGH = 10000;

bool barrier(int command) { return ::syscall(SYS_membarrier, command, 0, 0) == 0; }

// The thread sanitizer knows nothing of the barrier, and would not see what it is there to check.
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

// False until the library has been loaded, which is the slower way and as good.
const bool VRKAsymmetricFence::m_oneSided = prepare();

void VRKAsymmetricFence::order() {
  if (!m_oneSided || barrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED)) return;
  // A filter of system calls that came after the library: what others have stored is seen long before this is over.
  ::usleep(LONG_ENOUGH);
}
