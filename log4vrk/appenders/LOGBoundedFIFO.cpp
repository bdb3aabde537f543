#include "log4vrk/appenders/LOGBoundedFIFO.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

constexpr std::size_t CACHE_LINE = 64;
constexpr std::uint64_t FIRST_CAPACITY = 64;  // a power of two, as all are
// The bit of a ring's tail that says that nothing is put into the ring any more.
constexpr std::uint64_t SEALED = std::uint64_t{1} << 63;

std::int64_t distance(std::uint64_t from, std::uint64_t to) { return static_cast<std::int64_t>(to - from); }

}  // namespace

// An event, or the record of one that is nothing but a text. It is written by whoever has claimed its position, who sets `turn` then,
// and read by the getting side, which advances m_head then.
struct alignas(CACHE_LINE) LOGBoundedFIFO::Slot {
  static constexpr std::size_t SIZE = 3 * CACHE_LINE;
  static constexpr std::uint32_t OBJECT = UINT32_MAX;

  std::atomic<std::uint64_t> turn{0};  // the position after that of the event that can be read
  std::int64_t timeStamp;
  std::int32_t timeStampNanos;
  std::uint32_t length;  // of the text, or OBJECT
  LOGLevel* level;
  union {
    LOGLogger* logger;
    LOGLoggingEvent* object;
  };
  char text[SIZE - 3 * sizeof(std::uint64_t) - 2 * sizeof(void*)];
};

// The slots of the positions from the one at which the ring began to the one at which it was sealed. The first is small, so that it
// stays in the processor's cache. When there are about to be more events than slots, the queue goes on in one of twice the size: there
// is a slot for every event, whatever happens to the maximum size.
struct LOGBoundedFIFO::Ring {
  Ring(std::uint64_t capacity, std::uint64_t head)
      : mask(capacity - 1), slots(new Slot[capacity]), tail(head), knownHead(head) {}

  std::uint64_t capacity() const { return mask + 1; }
  Slot& at(std::uint64_t position) const { return slots[position & mask]; }

  const std::uint64_t mask;
  std::unique_ptr<Slot[]> slots;  // freed by the getting side when it has left the ring
  std::atomic<Ring*> next{nullptr};

  // Of those who put: how many events there have been, and a value that m_head has had.
  alignas(CACHE_LINE) std::atomic<std::uint64_t> tail;
  std::atomic<std::uint64_t> knownHead;
};

// A position in the queue that nobody else has, and its slot.
struct LOGBoundedFIFO::Claim {
  // The slot is the getting side's from here on.
  void publish() { slot->turn.store(position + 1, std::memory_order_release); }

  Outcome outcome;
  std::uint64_t position = 0;
  Slot* slot = nullptr;
};

LOGBoundedFIFO::LOGBoundedFIFO(int maxSize)
    : m_maxSize(maxSize),
      m_last(vrkNew<Ring>(VRK_HERE, FIRST_CAPACITY, std::uint64_t{0})),
      m_rings(m_last),
      m_first(m_rings) {
  if (maxSize <= 0) {
    LOGLogLog::error("LOGBoundedFIFO::LOGBoundedFIFO --- The maxSize argument is not a positive integer.");
  }
}

LOGBoundedFIFO::~LOGBoundedFIFO() {
  for (Ring* ring = m_rings; ring != nullptr;) delete std::exchange(ring, ring->next.load());
}

// The head first: what was got had been put, and whoever sees the one sees the other. A newer ring's tail counts on from the older's.
int LOGBoundedFIFO::length() const {
  const std::uint64_t head = m_head.load(std::memory_order_acquire);
  const Ring& last = *m_last.load(std::memory_order_acquire);
  return static_cast<int>((last.tail.load(std::memory_order_relaxed) & ~SEALED) - head);
}

// What the head was some time ago is good enough as long as that leaves room. Whoever finds room may write the slot, so its reading
// must have happened before, by whichever thread the news of the head came: hence acquire and release for the known head, too.
// The slot itself is published by its `turn`; for the tail it is enough to be one number that all agree on.
LOGBoundedFIFO::Claim LOGBoundedFIFO::claim() {
  Ring* ring = m_last.load(std::memory_order_acquire);
  std::uint64_t tail = ring->tail.load(std::memory_order_acquire);
  for (;;) {
    if ((tail & SEALED) != 0) {
      Ring* const now = last();
      if (now == ring) return {CLOSED};
      ring = now;
      tail = ring->tail.load(std::memory_order_acquire);
      continue;
    }
    const int size = getMaxSize();
    const std::uint64_t known = ring->knownHead.load(std::memory_order_acquire);
    if (distance(known, tail) >= std::min<std::int64_t>(size, ring->capacity())) {
      const std::uint64_t head = m_head.load(std::memory_order_acquire);
      ring->knownHead.store(head, std::memory_order_release);
      // Unchanged before and after, it was the tail when the head was read. Otherwise the two say nothing.
      const std::uint64_t before = std::exchange(tail, ring->tail.load(std::memory_order_acquire));
      if (before != tail) continue;
      if (static_cast<int>(tail - head) == size) return {FULL};
      if (tail - head == ring->capacity()) {
        grow(*ring);
        tail = ring->tail.load(std::memory_order_acquire);
        continue;
      }
    }
    if (ring->tail.compare_exchange_weak(tail, tail + 1, std::memory_order_acquire)) {
      return {QUEUED, tail, &ring->at(tail)};
    }
  }
}

// A ring is sealed before there is another, but under the lock.
LOGBoundedFIFO::Ring* LOGBoundedFIFO::last() {
  const LOGLeafGuard guard(m_changing);
  return m_last.load(std::memory_order_relaxed);
}

// The getting side may follow `next`, and others go by what it has got, only when they would find the new ring to be the last.
void LOGBoundedFIFO::grow(Ring& crowded) {
  const LOGLeafGuard guard(m_changing);
  if ((crowded.tail.load(std::memory_order_relaxed) & SEALED) != 0) return;
  Ring* const next = vrkNew<Ring>(VRK_HERE, 2 * crowded.capacity(), crowded.knownHead.load(std::memory_order_acquire));
  next->tail.store(crowded.tail.fetch_or(SEALED, std::memory_order_relaxed), std::memory_order_relaxed);
  m_last.store(next, std::memory_order_release);
  crowded.next.store(next, std::memory_order_release);
}

void LOGBoundedFIFO::close() {
  const LOGLeafGuard guard(m_changing);
  m_last.load(std::memory_order_relaxed)->tail.fetch_or(SEALED, std::memory_order_relaxed);
}

void LOGBoundedFIFO::reportFull() { LOGLogLog::error("LOGBoundedFIFO:put --- The list of LOGEventLogger is full."); }

bool LOGBoundedFIFO::put(LOGLoggingEvent* event) {
  Claim mine = claim();
  if (mine.outcome != QUEUED) {
    reportFull();
    return false;
  }
  mine.slot->length = Slot::OBJECT;
  mine.slot->object = event;
  mine.publish();
  return true;
}

LOGBoundedFIFO::Outcome LOGBoundedFIFO::putCopy(const LOGLoggingEvent& event, std::unique_ptr<LOGLoggingEvent>& copy) {
  const bool asRecord = event.isPlain() && event.m_text.size() <= sizeof(Slot::text);
  if (!asRecord && !copy) copy = std::make_unique<LOGLoggingEvent>(event);
  const LOGGate::Pass inside;  // a fork finds no slot claimed and not published
  Claim mine = claim();
  if (mine.outcome != QUEUED) return mine.outcome;
  Slot& slot = *mine.slot;
  if (asRecord) {
    slot.timeStamp = event.m_timeStamp;
    slot.timeStampNanos = event.m_timeStampNanos;
    slot.length = static_cast<std::uint32_t>(event.m_text.size());
    slot.level = event.m_level;
    slot.logger = event.m_logger;
    std::memcpy(slot.text, event.m_text.data(), event.m_text.size());
  } else {
    slot.length = Slot::OBJECT;
    slot.object = copy.release();
  }
  mine.publish();
  return QUEUED;
}

// The oldest event's slot, when it has been published. In a ring that was sealed there is nothing to come once all that was claimed
// has been got.
LOGBoundedFIFO::Slot* LOGBoundedFIFO::oldest() {
  const std::uint64_t head = m_head.load(std::memory_order_relaxed);
  for (;;) {
    Slot& slot = m_first->at(head);
    if (slot.turn.load(std::memory_order_acquire) == head + 1) return &slot;
    Ring* const next = m_first->next.load(std::memory_order_acquire);
    if (next == nullptr || m_first->tail.load(std::memory_order_relaxed) != (head | SEALED)) return nullptr;
    m_first->slots.reset();
    m_first = next;
  }
}

LOGLoggingEvent* LOGBoundedFIFO::get(LOGLoggingEvent& place) {
  const Slot* const slot = oldest();
  if (slot == nullptr) return nullptr;
  LOGLoggingEvent* event = &place;
  if (slot->length == Slot::OBJECT) {
    event = slot->object;
  } else {
    place.setPlain(slot->timeStamp, slot->timeStampNanos, slot->level, slot->logger, {slot->text, slot->length});
  }
  m_head.store(m_head.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  return event;
}

LOGLoggingEvent* LOGBoundedFIFO::get() {
  if (oldest() == nullptr) return nullptr;
  auto place = std::make_unique<LOGLoggingEvent>();
  LOGLoggingEvent* const event = get(*place);
  return event == place.get() ? place.release() : event;
}

void LOGBoundedFIFO::resize(int newSize) {
  const LOGGuard guard(*this);
  m_maxSize.store(newSize, std::memory_order_relaxed);
}
