// A first-in, first-out list of logging events with a maximum length.

#pragma once

#include <atomic>

#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/platform/VRKExport.h"

class LOGLoggingEvent;

/// The queue between the threads that log and the dispatcher thread. It never blocks and never waits.
///
/// Thread safety: one putting thread and one getting thread at a time; they may run at once. Everything else from any
/// thread.
/// Ownership: events in the queue are lent; an event that get() returned belongs to the caller.
class LOG4VRK_EXPORT LOGBoundedFIFO : public LOGMutex {
 public:
  /// `maxSize` is a number of events. One that is not positive is reported and kept: a queue of size 0 is always full, one
  /// of a negative size never.
  explicit LOGBoundedFIFO(int maxSize);
  LOGBoundedFIFO(const LOGBoundedFIFO&) = delete;
  LOGBoundedFIFO& operator=(const LOGBoundedFIFO&) = delete;
  ~LOGBoundedFIFO() override;

  /// False when the queue is full: that is reported, and the event stays the caller's.
  bool put(LOGLoggingEvent* event);
  /// The oldest event, or null.
  LOGLoggingEvent* get();

  int length() const {
    const unsigned got = m_gets.load(std::memory_order_acquire);  // first: it is never more than what was put
    return static_cast<int>(m_puts.load(std::memory_order_acquire) - got);
  }
  int getMaxSize() const { return m_maxSize.load(std::memory_order_relaxed); }
  /// Exactly as many events as the size: after shrinking below its length the queue takes more, on purpose, until it has
  /// been drained to the size.
  bool isFull() const { return length() == getMaxSize(); }
  /// Right after a put(): whether the queue was empty before.
  bool wasEmpty() const { return length() == 1; }
  /// Right after a get(): whether the queue was full before.
  bool wasFull() const { return length() + 1 == getMaxSize(); }
  /// Keeps what is queued.
  void resize(int newSize);
  static int minimum(int a, int b) { return a < b ? a : b; }
  /// isFull() for the putting side, which looks at the getting side's counter only when it has to.
  bool isFullToPut();

 private:
  struct Block;

  std::atomic<int> m_maxSize;
  std::atomic<Block*> m_spare{nullptr};  // an empty block on its way back from the getting side

  // How many events there have been, the putting side's own, and what it last saw of the other; then the same of the getting side.
  // On cache lines of their own, so that the sides disturb each other only when one has caught up with the other.
  alignas(64) std::atomic<unsigned> m_puts{0};
  unsigned m_seenGets = 0;
  Block* m_last;
  int m_put = 0;
  alignas(64) std::atomic<unsigned> m_gets{0};
  unsigned m_seenPuts = 0;
  Block* m_first;
  int m_got = 0;
};
