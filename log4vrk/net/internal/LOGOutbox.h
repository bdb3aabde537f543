// What a TCP socket appender shares with the thread that sends.

#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>

#include "log4vrk/net/internal/LOGEventEncoder.h"
#include "log4vrk/net/internal/LOGOutboxRing.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/internal/VRKMutex.h"
#include "log4vrk/platform/internal/VRKWakeUp.h"

/// Events from the threads that log to the one that sends, first in, first out, with a limit in bytes. Each gets its
/// number here, so that the queue and the numbers have one order. An event stays until it is released, also when it has
/// been taken: then somebody else has it, the log server or a recovery file. When the memory is that of a file, what is
/// in it outlives a kill of the process.
///
/// Thread safety: any thread, except as said. Nothing is waited for but the lock.
class LOGOutbox {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr std::size_t MOST_BYTES = 4 << 20;

  enum Result { TAKEN, FULL, CLOSED };

  /// Once, before anything else but the closing: the memory that events go to, where a ring has been begun.
  void use(std::unique_ptr<VRKMappedFile> file);
  bool isUsable() const { return m_usable; }
  /// Whether what is in it outlives the process.
  bool lasts() const { return !m_path.isEmpty(); }
  /// For a line that says how many events are left in it.
  I18NString whereLeft() const { return lasts() ? "; the next start finds them in " + m_path : I18NString(); }

  Result put(const LOGEncodedEvent& event);
  bool isHalfFull() const { return m_ring.used() >= MOST_BYTES / 2; }  // for the sending thread
  /// Takes no event from now on. What is in it stays, and the sending thread waits for acknowledgements until the time
  /// is over. Closed again, the earlier time counts.
  void close(Clock::time_point farewellUntil);
  bool isClosed();
  Clock::time_point farewellUntil();

  // For the sending thread.
  /// Everything there is. False when there is nothing but what is passed.
  bool take();
  bool hasTaken() const { return m_ring.position() < m_taken; }
  /// The first that has been taken and is not passed, with its stamp.
  bool first(LOGEncodedEvent& event) { return m_ring.get(event, m_taken); }
  void pass();
  /// What is passed and comes before this sequence is safe elsewhere.
  void release(std::uint64_t before);
  /// After close(): gives the memory back. A file with events that are not released stays, for the next start.
  void end();

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
  /// False while waiting for space makes no sense.
  std::atomic<bool> moves{true};

  /// How many events are not released.
  std::uint64_t inMemory() const {
    const std::uint64_t released = m_released;  // first, lest the other be older
    return m_givenUp ? 0 : m_last - released;
  }
  /// Nobody sends or keeps any more what is not released: how many events that are. They count as dropped, unless they
  /// last. Later calls have nothing.
  std::uint64_t giveUp();

 private:
  VRKWakeUp m_wakeUp;
  VRKStopSignal m_ended;
  LOGOutboxRing m_ring;  // putting needs the lock
  bool m_usable = false;
  I18NString m_path;
  std::uint64_t m_passed = 0;                // the sequence of the last; the sending thread's
  std::atomic<std::uint64_t> m_released{0};  // and of the last of those
  std::atomic<bool> m_givenUp{false};

  // What log calls change.
  alignas(64) VRKMutex m_mutex;
  std::uint64_t m_taken = 0;             // a position; changes under the lock
  std::atomic<std::uint64_t> m_last{0};  // the sequence of the last event; changes under the lock
  bool m_wasHalfFull VRK_GUARDED_BY(m_mutex) = false;
  bool m_closed VRK_GUARDED_BY(m_mutex) = false;
  Clock::time_point m_farewellUntil VRK_GUARDED_BY(m_mutex) = Clock::time_point::max();
};
