// Order between a thread that says something all the time and one that seldom wants to know.

#pragma once

#include <atomic>

#include "log4vrk/platform/VRKExport.h"

/// A says "I am in" and then looks whether it may; B says "keep out" and then looks whether anybody is in. At least one
/// of them has to see what the other has said, which takes a full barrier on both sides. Where the system can put one
/// into all running threads of the process, B pays for both: A is saved some ten nanoseconds each time, B needs a few
/// microseconds.
///
/// Thread safety: any thread.
class LOG4VRK_EXPORT VRKAsymmetricFence {
 public:
  /// A's: stores `value`. What A has stored before is seen by whoever sees it, and what it loads afterwards is loaded
  /// afterwards.
  template <typename Value>
  static void store(std::atomic<Value>& place, Value value) {
    if (m_oneSided) {
      place.store(value, std::memory_order_release);
      std::atomic_signal_fence(std::memory_order_seq_cst);
    } else {
      place.store(value, std::memory_order_seq_cst);
    }
  }
  /// B's, between its sequentially consistent store and its first load.
  static void order();

 private:
  static const bool m_oneSided;
};
