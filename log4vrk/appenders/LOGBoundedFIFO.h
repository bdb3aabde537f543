// A first-in, first-out list of logging events with a maximum length.

#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKMutex.h"

class LOGLoggingEvent;

/// The queue between the threads that log and the dispatcher thread. It never blocks and never waits.
///
/// Thread safety: any thread, but one getting thread at a time.
/// Ownership: events in the queue are lent; an event that get() returned belongs to the caller.
class LOG4VRK_EXPORT LOGBoundedFIFO : public LOGMutex {
 public:
  /// `maxSize` is a number of events. One that is not positive is reported and kept: a queue of size 0 is always full,
  /// one of a negative size never.
  explicit LOGBoundedFIFO(int maxSize);
  LOGBoundedFIFO(const LOGBoundedFIFO&) = delete;
  LOGBoundedFIFO& operator=(const LOGBoundedFIFO&) = delete;
  ~LOGBoundedFIFO() override;

  /// False when the queue is full: that is reported, and the event stays the caller's.
  bool put(LOGLoggingEvent* event);
  /// The oldest event, or null.
  LOGLoggingEvent* get();

  int length() const;
  int getMaxSize() const { return m_maxSize.load(std::memory_order_relaxed); }
  /// Exactly as many events as the size: after shrinking below its length the queue takes more, on purpose, until it
  /// has been drained to the size.
  bool isFull() const { return length() == getMaxSize(); }
  /// Right after a put(): whether the queue was empty before.
  bool wasEmpty() const { return length() == 1; }
  /// Right after a get(): whether the queue was full before.
  bool wasFull() const { return length() + 1 == getMaxSize(); }
  /// Keeps what is queued.
  void resize(int newSize);
  static int minimum(int a, int b) { return a < b ? a : b; }

  // What the asynchronous appender and its dispatcher use instead, so that an event needs no memory of its own on its
  // way.
  enum Outcome { QUEUED, FULL, CLOSED };
  /// Puts a copy into the queue, without a word when it is refused. Of an event that has more than a short text it is
  /// an object, made in `copy` before the first attempt and left there for the next.
  Outcome putCopy(const LOGLoggingEvent& event, std::unique_ptr<LOGLoggingEvent>& copy);
  static void reportFull();
  /// get() without an object for an event that came without: it is returned in `place`, everything else as the caller's
  /// own.
  LOGLoggingEvent* get(LOGLoggingEvent& place);
  /// For good: nothing is put any more, and length() says what is still to be got.
  void close();
  /// How many events, since the queue was made.
  std::uint64_t putSoFar() const;
  /// How many of them have been delivered. The getting side's.
  std::atomic<std::uint64_t> delivered{0};
  /// The number of the dispatcher's thread; 0 before it runs.
  std::atomic<long> servedBy{0};
  /// Log calls that wait for space.
  std::atomic<int> waiting{0};

 private:
  struct Slot;
  struct Ring;
  struct Claim;

  Claim claim();
  Ring* lastOpen();
  void goOn(const Ring& usedUp);
  Slot* oldest();

  std::atomic<int> m_maxSize;
  std::atomic<Ring*> m_last;  // into which events are put
  VRKMutex m_changing;        // held while the last ring is replaced or sealed
  Ring* m_unused VRK_GUARDED_BY(m_changing) = nullptr;

  // The getting side's, on a cache line of its own: those who put look at it only when there might be no space.
  alignas(64) std::atomic<std::uint64_t> m_head{0};  // how many events have been got
  Ring* m_first;
};
