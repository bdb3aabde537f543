#include "log4vrk/platform/VRKAsymmetricFence.h"

#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

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
  if (m_oneSided) barrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED);
}
