#include "log4vrk/appenders/LOGBoundedFIFO.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/core/internal/LOGStatementCall.h"
#include "log4vrk/core/internal/LOGTaking.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

constexpr std::size_t CACHE_LINE = 64;
// The bit of a ring's tail that says that nothing more is put into the ring.
constexpr std::uint64_t SEALED = std::uint64_t{1} << 63;

std::int64_t distance(std::uint64_t from, std::uint64_t to) { return static_cast<std::int64_t>(to - from); }

}  // namespace

// An event, or the record of one that is nothing but a text, be it put together already or not. Whoever has claimed its
// position writes it and then sets `turn`; the getting side sees that, reads it and then advances m_head.
struct alignas(CACHE_LINE) LOGBoundedFIFO::Slot {
  static constexpr std::size_t SIZE = 3 * CACHE_LINE;
  static constexpr std::uint16_t OBJECT = UINT16_MAX, PACKED = 1 << 15;

  // In front of the parts of a text that is not put together yet.
  struct Printing {
    LOGPackedText::Print print;
    const void* statement;
  };

  std::atomic<std::uint64_t> turn{0};  // the position after that of the event that can be read
  std::int64_t timeStamp;
  std::int32_t timeStampNanos;
  std::uint16_t length;                         // of the text, of its parts with PACKED, or OBJECT
  std::uint8_t contextLength, ownFieldsLength;  // of the fields, which stand behind the text
  LOGLevel* level;
  union {
    LOGLogger* logger;
    LOGLoggingEvent* object;
  };
  const LOGSourceLocation* place;
  alignas(Printing) char text[SIZE - 3 * sizeof(std::uint64_t) - 3 * sizeof(void*)];

  LOGPackedText packed() const {
    const Printing& printing = *reinterpret_cast<const Printing*>(text);
    return {printing.print, printing.statement, {text + sizeof printing, std::size_t{length} & ~std::size_t{PACKED}}};
  }
};

// Slots for some events in a row. There are rings, and no array of the maximum size, for two reasons: a short queue
// stays in one ring and so in the processor's cache, however large the maximum; and the maximum can be changed at any
// time, because a full ring is followed by another. A ring that has been emptied is kept for its next use. Rings are
// freed only with the queue: a thread may still be looking at one that has been left. Such a thread cannot mistake it
// for the ring that it knew, because positions in the queue are never used twice.
struct LOGBoundedFIFO::Ring {
  static constexpr std::uint64_t CAPACITY = 128;  // a power of two
  static_assert(sizeof(Slot) == Slot::SIZE);

  // For a ring that nothing is put into yet. The tail is stored last, since it is what lets putting threads in.
  void begin(std::uint64_t position, std::uint64_t head) {
    next.store(nullptr, std::memory_order_relaxed);
    first.store(position, std::memory_order_relaxed);
    knownHead.store(head, std::memory_order_relaxed);
    tail.store(position, std::memory_order_release);
  }
  bool isSealed() const { return (tail.load(std::memory_order_relaxed) & SEALED) != 0; }
  Slot& at(std::uint64_t position) { return slots[position % CAPACITY]; }

  // What putting threads use, on one cache line.
  alignas(CACHE_LINE) std::atomic<std::uint64_t> tail{0};  // how many events have ever been put; may be SEALED
  std::atomic<std::uint64_t> knownHead{0};                 // what m_head was at some time
  std::atomic<std::uint64_t> first{0};                     // the position of the first event in this ring

  // The ring after this one; of a ring that is not in use, the next such ring.
  alignas(CACHE_LINE) std::atomic<Ring*> next{nullptr};
  Slot slots[CAPACITY];
};

// A position in the queue that nobody else has, and its slot.
struct LOGBoundedFIFO::Claim {
  // The slot is the getting side's from here on.
  void publish() { slot->turn.store(position + 1, std::memory_order_release); }

  Outcome outcome;
  std::uint64_t position = 0;
  Slot* slot = nullptr;
};

LOGBoundedFIFO::LOGBoundedFIFO(int maxSize) : m_maxSize(maxSize), m_last(vrkNew<Ring>(VRK_HERE)), m_first(m_last) {
  if (maxSize <= 0) {
    LOGLogLog::error("LOGBoundedFIFO::LOGBoundedFIFO --- The maxSize argument is not a positive integer.");
  }
}

LOGBoundedFIFO::~LOGBoundedFIFO() {
  for (Ring* ring : {m_first, m_unused}) {
    while (ring != nullptr) delete std::exchange(ring, ring->next.load());
  }
}

int LOGBoundedFIFO::length() const {
  const std::uint64_t got = m_head.load(std::memory_order_acquire);  // first, so that the difference is never negative
  return static_cast<int>(putSoFar() - got);
}

std::uint64_t LOGBoundedFIFO::putSoFar() const {
  const Ring& last = *m_last.load(std::memory_order_acquire);
  return last.tail.load(std::memory_order_relaxed) & ~SEALED;
}

// Takes the next position, by one compare-and-swap of the tail.
//
// The head belongs to the getting side, and reading it at every event would move its cache line to and fro. So the
// putting threads share a copy of it, which may be old: as long as even that leaves room there is room. Only when it
// does not, the head itself is read.
//
// Whoever finds room writes a slot that the getting side has read before. That reading has to have happened before the
// writing, whichever thread has brought the news of the head: hence acquire and release for the copy, too.
//
// A tail that has been overtaken does no harm, because the compare-and-swap fails then.
[[gnu::always_inline]] inline LOGBoundedFIFO::Claim LOGBoundedFIFO::claim() {
  Ring* ring = m_last.load(std::memory_order_acquire);
  std::uint64_t tail = ring->tail.load(std::memory_order_acquire);
  for (;;) {
    if ((tail & SEALED) != 0) {
      ring = lastOpen();
      if (ring == nullptr) return {CLOSED};
      tail = ring->tail.load(std::memory_order_acquire);
      continue;
    }
    const int size = getMaxSize();
    const std::uint64_t known = ring->knownHead.load(std::memory_order_acquire);
    const std::uint64_t first = ring->first.load(std::memory_order_relaxed);
    const bool mayBecomeFull = distance(known, tail) + 1 >= size;
    if (mayBecomeFull || distance(std::max(known, first), tail) >= distance(0, Ring::CAPACITY)) {
      const std::uint64_t head = m_head.load(std::memory_order_acquire);
      ring->knownHead.store(head, std::memory_order_release);
      // Head and tail are two reads. Only a tail that is the same before and after belongs to that head.
      const std::uint64_t before = std::exchange(tail, ring->tail.load(std::memory_order_acquire));
      if (before != tail) continue;
      if (static_cast<int>(tail - head) == size) return {FULL};
      if (tail - std::max(head, first) == Ring::CAPACITY) {
        goOn(*ring);
        tail = ring->tail.load(std::memory_order_acquire);
        continue;
      }
    }
    if (ring->tail.compare_exchange_weak(tail, tail + 1, std::memory_order_acquire)) {
      if (mayBecomeFull) noteFull(tail + 1, size);
      return {QUEUED, tail, &ring->at(tail)};
    }
  }
}

// Before the last event is published, so that nothing that is got later finds the queue full unnoticed.
void LOGBoundedFIFO::noteFull(std::uint64_t tail, int size) {
  if (size > 0) m_fullAt.store(tail - static_cast<std::uint64_t>(size), std::memory_order_relaxed);
}

// Null when the queue is closed. The lock is needed to tell that from a ring that has been sealed because it is full:
// its successor is made under the same lock.
LOGBoundedFIFO::Ring* LOGBoundedFIFO::lastOpen() {
  const LOGLeafGuard guard(m_changing);
  Ring* const last = m_last.load(std::memory_order_relaxed);
  return last->isSealed() ? nullptr : last;
}

// Goes on in another ring. The order of the last two stores counts: the getting side leaves a ring as soon as it sees
// `next`, and putting threads go by what it has got. They must find the new ring to be the last one by then.
void LOGBoundedFIFO::goOn(const Ring& usedUp) {
  const LOGLeafGuard guard(m_changing);
  Ring* const last = m_last.load(std::memory_order_relaxed);
  if (last != &usedUp || last->isSealed()) return;
  Ring* const next = m_unused != nullptr ? m_unused : vrkNew<Ring>(VRK_HERE);
  if (next == m_unused) m_unused = next->next.load(std::memory_order_relaxed);
  next->begin(last->tail.fetch_or(SEALED, std::memory_order_relaxed), last->knownHead.load(std::memory_order_acquire));
  m_last.store(next, std::memory_order_release);
  last->next.store(next, std::memory_order_release);
}

void LOGBoundedFIFO::close() {
  const LOGLeafGuard guard(m_changing);
  m_last.load(std::memory_order_relaxed)->tail.fetch_or(SEALED, std::memory_order_relaxed);
}

void LOGBoundedFIFO::reportFull() {
  LOGTaking::refuse();
  LOGLogLog::error("LOGBoundedFIFO:put --- The list of LOGEventLogger is full.");
}

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
  const std::string_view context = event.contextBytes(), fields = event.m_fields;
  const bool asRecord = event.isPlain() && event.m_text.size() + context.size() + fields.size() <= sizeof(Slot::text);
  if (!asRecord && !copy) copy = std::make_unique<LOGLoggingEvent>(event);
  const LOGGate::Pass inside;  // a fork finds no slot claimed and not published
  Claim mine = claim();
  if (mine.outcome != QUEUED) return mine.outcome;
  Slot& slot = *mine.slot;
  if (asRecord) {
    slot.timeStamp = event.m_timeStamp;
    slot.timeStampNanos = event.m_timeStampNanos;
    slot.length = static_cast<std::uint16_t>(event.m_text.size());
    slot.contextLength = static_cast<std::uint8_t>(context.size());
    slot.ownFieldsLength = static_cast<std::uint8_t>(fields.size());
    slot.level = event.m_level;
    slot.logger = event.m_logger;
    slot.place = event.m_place;
    std::memcpy(slot.text, event.m_text.data(), event.m_text.size());
    if (event.hasFields()) {
      fields.copy(slot.text + event.m_text.size() + context.copy(slot.text + event.m_text.size(), context.size()),
                  fields.size());
    }
  } else {
    slot.length = Slot::OBJECT;
    slot.object = copy.release();
  }
  mine.publish();
  return QUEUED;
}

bool LOGBoundedFIFO::putCall(LOGStatementCall& call) {
  const LOGPackedText* const packed = call.packed();
  const std::string_view text = packed != nullptr ? packed->parts : call.text();
  const std::size_t before = packed != nullptr ? sizeof(Slot::Printing) : 0;
  if (before + text.size() > sizeof(Slot::text)) return false;
  Claim mine = claim();
  if (mine.outcome != QUEUED) return false;
  Slot& slot = *mine.slot;
  slot.timeStamp = call.time().seconds;
  slot.timeStampNanos = call.time().nanoseconds;
  slot.length = static_cast<std::uint16_t>(text.size());
  slot.contextLength = slot.ownFieldsLength = 0;
  slot.level = call.level();
  slot.logger = &call.logger();
  slot.place = call.place();
  if (packed != nullptr) {
    slot.length = static_cast<std::uint16_t>(slot.length | Slot::PACKED);
    new (slot.text) Slot::Printing{packed->print, packed->statement};
  }
  I18NUtf8Buffer::copy(slot.text + before, text);
  mine.publish();
  return true;
}

// The slot of the oldest event, once it has been published: a thread that has claimed it may still be writing, and then
// those behind it wait. A sealed ring is left when everything that was claimed in it has been got.
LOGBoundedFIFO::Slot* LOGBoundedFIFO::oldest() {
  const std::uint64_t head = m_head.load(std::memory_order_relaxed);
  for (;;) {
    Slot& slot = m_first->at(head);
    if (slot.turn.load(std::memory_order_acquire) == head + 1) return &slot;
    Ring* const next = m_first->next.load(std::memory_order_acquire);
    if (next == nullptr || m_first->tail.load(std::memory_order_relaxed) != (head | SEALED)) return nullptr;
    const LOGLeafGuard guard(m_changing);
    m_first->next.store(m_unused, std::memory_order_relaxed);
    m_unused = std::exchange(m_first, next);
  }
}

LOGLoggingEvent* LOGBoundedFIFO::get(LOGLoggingEvent& place) {
  const Slot* const slot = oldest();
  if (slot == nullptr) return nullptr;
  LOGLoggingEvent* event = &place;
  if (slot->length == Slot::OBJECT) {
    event = slot->object;
  } else {
    const bool isPacked = (slot->length & Slot::PACKED) != 0;
    place.setPlain(slot->timeStamp, slot->timeStampNanos, slot->level, slot->logger, slot->place,
                   {slot->text, isPacked ? std::size_t{0} : slot->length});
    if (isPacked) place.m_text = slot->packed().printTo(place.m_ownText);
    if (slot->contextLength + slot->ownFieldsLength > 0) {
      const char* const context = slot->text + slot->length;
      place.ownFields({context, slot->contextLength}, {context + slot->contextLength, slot->ownFieldsLength});
    }
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
  noteFull(putSoFar(), newSize);
}
