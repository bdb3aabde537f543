// What a TCP socket appender shares with the thread that sends.

#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>

#include "log4vrk/net/internal/LOGEventEncoder.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/internal/VRKMutex.h"
#include "log4vrk/platform/internal/VRKWakeUp.h"

/// Events from the threads that log to the one that sends, first in, first out, with a limit in events and in bytes.
/// Each gets its number here, so that the queue and the numbers have one order.
///
/// Thread safety: any thread. Nothing is waited for but the lock.
class LOGOutbox {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr std::size_t MOST_EVENTS = 16384;
  static constexpr std::size_t MOST_BYTES = 8 << 20;

  enum Result { TAKEN, FULL, CLOSED };

  /// Only when it is taken, the event is moved out of.
  Result put(LOGEncodedEvent& event);
  /// Everything there is, into what is empty.
  void takeAll(std::deque<LOGEncodedEvent>& events);
  bool isFull();
  bool isHalfFull();
  /// Takes no event from now on. What is in it stays, and the sending thread waits for acknowledgements until the time
  /// is over. Closed again, the earlier time counts.
  void close(Clock::time_point farewellUntil);
  bool isClosed();
  Clock::time_point farewellUntil();

  /// Where the sending thread waits. It is woken when there are events after there were none, and when the queue
  /// becomes half full.
  VRKWakeUp& wakeUp() { return m_wakeUp; }
  /// Stopped when nobody sends any more.
  VRKStopSignal& ended() { return m_ended; }

  // Events, since the appender was made, except for inRecovery: that is now, and counts what earlier processes left,
  // too.
  std::atomic<std::uint64_t> sent{0};  // repetitions included
  std::atomic<std::uint64_t> acknowledged{0};
  std::atomic<std::uint64_t> inRecovery{0};
  std::atomic<std::uint64_t> dropped{0};
  /// Now neither answered nor in the recovery files, in the queue or taken from it.
  std::atomic<std::int64_t> inMemory{0};
  /// False while waiting for space makes no sense.
  std::atomic<bool> moves{true};

  /// What is in memory counts as dropped: how many events that are.
  std::int64_t giveUp();

 private:
  bool holds(std::size_t halves) const VRK_REQUIRES(m_mutex);

  VRKWakeUp m_wakeUp;
  VRKStopSignal m_ended;
  VRKMutex m_mutex;
  std::deque<LOGEncodedEvent> m_events VRK_GUARDED_BY(m_mutex);
  std::size_t m_bytes VRK_GUARDED_BY(m_mutex) = 0;
  std::uint64_t m_sequence VRK_GUARDED_BY(m_mutex) = 0;  // of the last event
  bool m_closed VRK_GUARDED_BY(m_mutex) = false;
  Clock::time_point m_farewellUntil VRK_GUARDED_BY(m_mutex) = Clock::time_point::max();
};
