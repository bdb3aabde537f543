#include "log4vrk/platform/VRKThreadCriticalSection.h"

#include <cerrno>
#include <mutex>
#include <new>
#include <type_traits>

#include "log4vrk/platform/VRKThrowable.h"

namespace {

// Its address stands for the thread. Each lock asks for it, so it is of the model that takes no call to find it. One
// byte fits into the little room that the thread library keeps for such variables of libraries loaded late.
__thread char t_self __attribute__((tls_model("initial-exec")));

template <typename Memory>
inline std::mutex& mutexIn(Memory& memory) {
  return *std::launder(reinterpret_cast<std::mutex*>(&memory));
}

}  // namespace

VRKThreadCriticalSection::VRKThreadCriticalSection(int) {
  static_assert(sizeof(std::mutex) <= sizeof(Mutex) && alignof(std::mutex) <= alignof(Mutex));
  static_assert(std::is_trivially_destructible_v<std::mutex>);
  new (&m_mutex) std::mutex;
}

void VRKThreadCriticalSection::lock() {
  if (VRKFault::hit(VRKFault::LOCK)) throw VRKSystemError(EAGAIN, "critical section", VRK_HERE);
  const void* const self = &t_self;
  // Relaxed is enough: only this thread stores its own address here, so it reads that only when it is the owner.
  if (m_owner.load(std::memory_order_relaxed) != self) {
    mutexIn(m_mutex).lock();
    m_owner.store(self, std::memory_order_relaxed);
  }
  ++m_depth;
}

bool VRKThreadCriticalSection::tryLock() {
  const void* const self = &t_self;
  if (m_owner.load(std::memory_order_relaxed) != self) {
    if (!mutexIn(m_mutex).try_lock()) return false;
    m_owner.store(self, std::memory_order_relaxed);
  }
  ++m_depth;
  return true;
}

bool VRKThreadCriticalSection::isMine() const { return m_owner.load(std::memory_order_relaxed) == &t_self; }

void VRKThreadCriticalSection::unlock() {
  if (--m_depth != 0) return;
  m_owner.store(nullptr, std::memory_order_relaxed);
  mutexIn(m_mutex).unlock();
}
