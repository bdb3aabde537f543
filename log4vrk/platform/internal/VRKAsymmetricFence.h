// The memory barrier between threads that enter something all the time and one that seldom closes it.

#pragma once

#include <atomic>

/// Thread A stores "I am in" and then loads whether it is closed. Thread B stores "closed" and then loads whether
/// anybody is in. At least one of them has to see what the other has stored, which takes a full barrier between store
/// and load on both sides. Where the system can run a barrier in all threads of the process (membarrier), B has it run
/// A's: a log call is A several times and saves nanoseconds each time, and B pays microseconds.
///
/// Thread safety: any thread.
class VRKAsymmetricFence {
 public:
  /// A's store. Whoever sees `value` also sees what A stored before it. A's later loads come after it.
  template <typename Value>
  static void store(std::atomic<Value>& place, Value value) {
    if (m_oneSided) {
      place.store(value, std::memory_order_release);
      std::atomic_signal_fence(std::memory_order_seq_cst);
    } else {
      place.store(value, std::memory_order_seq_cst);
    }
  }
  /// B calls it between its store, which is sequentially consistent, and its first load.
  static void order();

 private:
  static const bool m_oneSided;  // membarrier is there, so that A needs no barrier
};
