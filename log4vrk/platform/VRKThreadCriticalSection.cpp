#include "log4vrk/platform/VRKThreadCriticalSection.h"

#include <mutex>
#include <new>
#include <type_traits>

namespace {

using Number = std::uintptr_t;
constexpr Number FREE = 0;

// The number of the thread, which no thread before it had, nor one of the process that this was forked from; 0: it has
// none yet. Each lock asks for it, so it is of the model that takes no call to find it, and fits into the little room
// that the thread library keeps for such variables of libraries loaded late.
__thread Number t_number __attribute__((tls_model("initial-exec")));
std::atomic<Number> g_lastNumber{0};

// The threads up to g_lastOfParent are gone, save the one that forked; see freeInChild().
Number g_lastOfParent = 0, g_forker = 0;

[[gnu::cold, gnu::noinline]] Number makeNumber() { return t_number = ++g_lastNumber; }

inline Number thisThread() { return t_number != 0 ? t_number : makeNumber(); }

bool isGone(Number owner) { return owner <= g_lastOfParent && owner != g_forker; }

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
  const Number self = thisThread();
  // Relaxed is enough: only this thread stores its own number here, so it reads that only when it is the owner.
  const Number owner = m_owner.load(std::memory_order_relaxed);
  if (owner != self && (owner == FREE || !takeOver(owner, self))) {
    mutexIn(m_mutex).lock();
    m_owner.store(self, std::memory_order_relaxed);
  }
  ++m_depth;
}

// Of several threads that meet the lock of a thread that is gone, one gets it as if that thread had handed it over.
bool VRKThreadCriticalSection::takeOver(Number owner, Number self) {
  if (!isGone(owner) || !m_owner.compare_exchange_strong(owner, self)) return false;
  m_depth = 0;
  return true;
}

bool VRKThreadCriticalSection::tryLock() {
  const Number self = thisThread();
  const Number owner = m_owner.load(std::memory_order_relaxed);
  if (owner != self && (owner == FREE || !takeOver(owner, self))) {
    if (!mutexIn(m_mutex).try_lock()) return false;
    m_owner.store(self, std::memory_order_relaxed);
  }
  ++m_depth;
  return true;
}

void VRKThreadCriticalSection::freeInChild() {
  g_lastOfParent = g_lastNumber;
  g_forker = t_number;
}

bool VRKThreadCriticalSection::isMine() const { return m_owner.load(std::memory_order_relaxed) == thisThread(); }

void VRKThreadCriticalSection::unlock() {
  if (--m_depth != 0) return;
  m_owner.store(FREE, std::memory_order_relaxed);
  mutexIn(m_mutex).unlock();
}
