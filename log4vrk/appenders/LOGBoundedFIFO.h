// A first-in, first-out list of logging events with a maximum length.

#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "log4vrk/appenders/internal/LOGQueueProgress.h"
#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKMutex.h"

class LOGLoggingEvent;
class LOGStatementCall;

/// The queue between the threads that log and the dispatcher thread. It never blocks and never waits.
///
/// Thread safety: any thread, but one getting thread at a time.
/// Ownership: events in the queue are lent; an event that get() returned belongs to the caller.
class LOG4VRK_EXPORT LOGBoundedFIFO : public LOGMutex, public LOGQueueProgress {
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

  // The asynchronous appender and its dispatcher use the following instead. An event then needs no memory of its own on
  // its way.
  enum Outcome { QUEUED, FULL, CLOSED };
  /// Puts a copy into the queue. A refusal is not reported. An event that is no more than a short text is copied into
  /// the queue's own memory. Any other needs an object: it is made in `copy` before the first attempt, and stays there
  /// for the next when it is refused.
  Outcome putCopy(const LOGLoggingEvent& event, std::unique_ptr<LOGLoggingEvent>& copy);
  /// Puts what is known of an event that has not been made. False when it has to be made: the queue is full or closed,
  /// or the text takes more than the queue has in one place. Inside the gate.
  LOG4VRK_HIDDEN bool putCall(LOGStatementCall& call);
  static void reportFull();
  /// As get(), but an event that came without an object is filled into `place`, and that is returned. Any other result
  /// is an object, which belongs to the caller.
  LOGLoggingEvent* get(LOGLoggingEvent& place);
  // For the getting side. Neither of them reads what the putting threads write for every event: that would take its
  // cache line away from them, which costs them as much as everything else they do there.
  /// Whether get() would return an event.
  bool hasNext() { return oldest() != nullptr; }
  /// Right after a get(): as wasFull().
  bool hasFreedSpace() const {
    return m_head.load(std::memory_order_relaxed) - 1 == m_fullAt.load(std::memory_order_relaxed);
  }
  /// From now on nothing can be put, for good. length() says how many events are still to be got.
  void close();
  /// In events.
  std::uint64_t putSoFar() const override;

 private:
  struct Slot;
  struct Ring;
  struct Claim;
  static constexpr std::uint64_t NEVER = UINT64_MAX;

  Claim claim();
  LOG4VRK_HIDDEN void noteFull(std::uint64_t tail, int size);
  Ring* lastOpen();
  void goOn(const Ring& usedUp);
  Slot* oldest();

  // What putting threads read for every event. What the getting side changes all the time is elsewhere, in the base
  // class, too.
  alignas(64) std::atomic<int> m_maxSize;
  std::atomic<Ring*> m_last;  // the ring into which events are put
  // How many events had been or will have been got when the queue was last full, or will be unless more are put.
  // Putting threads change it only when there are about as many events as the maximum.
  std::atomic<std::uint64_t> m_fullAt{NEVER};
  VRKMutex m_changing;  // held while the last ring is replaced or sealed
  Ring* m_unused VRK_GUARDED_BY(m_changing) = nullptr;

  // Only the getting side changes these. They have a cache line of their own, which putting threads read only when
  // there might be no space, so that the two sides do not slow each other down.
  alignas(64) std::atomic<std::uint64_t> m_head{0};  // how many events have been got
  Ring* m_first;                                     // the ring that holds the oldest event
};
