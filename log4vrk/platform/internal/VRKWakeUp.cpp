#include "log4vrk/platform/internal/VRKWakeUp.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>

#include "log4vrk/platform/VRKThrowable.h"

VRKWakeUp::VRKWakeUp() : m_descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (m_descriptor < 0) throw VRKSystemError(errno, "eventfd", VRK_HERE);
}

VRKWakeUp::~VRKWakeUp() { ::close(m_descriptor); }

void VRKWakeUp::wake() {
  const std::uint64_t one = 1;
  // It fails only when the counter is full: then it is awake.
  static_cast<void>(!::write(m_descriptor, &one, sizeof one));
}

void VRKWakeUp::wait(int descriptor, bool orWritten, long milliseconds) {
  // A negative descriptor is passed over.
  pollfd waiting[] = {{m_descriptor, POLLIN, 0},
                      {descriptor, static_cast<short>(orWritten ? POLLIN | POLLOUT : POLLIN), 0}};
  const int timeout = static_cast<int>(std::clamp(milliseconds, 0L, static_cast<long>(INT_MAX)));
  if (::poll(waiting, 2, timeout) <= 0 || waiting[0].revents == 0) return;
  std::uint64_t count;
  static_cast<void>(!::read(m_descriptor, &count, sizeof count));
}
