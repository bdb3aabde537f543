#include "log4vrk/appenders/LOGBoundedFIFO.h"

#include <utility>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/platform/VRKThrowable.h"

// Events in a row. The counter of puts publishes what the putting side has written, and the link to the next block.
struct LOGBoundedFIFO::Block {
  static constexpr int SIZE = 256;

  LOGLoggingEvent* events[SIZE];
  Block* next = nullptr;
};

LOGBoundedFIFO::LOGBoundedFIFO(int maxSize) : m_maxSize(maxSize), m_last(vrkNew<Block>(VRK_HERE)), m_first(m_last) {
  if (maxSize <= 0) {
    LOGLogLog::error("LOGBoundedFIFO::LOGBoundedFIFO --- The maxSize argument is not a positive integer.");
  }
}

LOGBoundedFIFO::~LOGBoundedFIFO() {
  while (m_first != nullptr) delete std::exchange(m_first, m_first->next);
  delete m_spare.load();
}

bool LOGBoundedFIFO::isFullToPut() {
  const int size = getMaxSize();
  // What the other side has got since can only make the queue shorter.
  if (static_cast<int>(m_puts.load(std::memory_order_relaxed) - m_seenGets) < size) return false;
  m_seenGets = m_gets.load(std::memory_order_acquire);
  return static_cast<int>(m_puts.load(std::memory_order_relaxed) - m_seenGets) == size;
}

bool LOGBoundedFIFO::put(LOGLoggingEvent* event) {
  if (isFullToPut()) {
    LOGLogLog::error("LOGBoundedFIFO:put --- The list of LOGEventLogger is full.");
    return false;
  }
  if (m_put == Block::SIZE) {
    Block* const spare = m_spare.exchange(nullptr, std::memory_order_acquire);
    Block* const block = spare != nullptr ? spare : vrkNew<Block>(VRK_HERE);
    block->next = nullptr;
    m_last->next = block;
    m_last = block;
    m_put = 0;
  }
  m_last->events[m_put++] = event;
  m_puts.store(m_puts.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  return true;
}

LOGLoggingEvent* LOGBoundedFIFO::get() {
  const unsigned gets = m_gets.load(std::memory_order_relaxed);
  if (m_seenPuts == gets) m_seenPuts = m_puts.load(std::memory_order_acquire);
  if (m_seenPuts == gets) return nullptr;
  if (m_got == Block::SIZE) {
    Block* const empty = std::exchange(m_first, m_first->next);
    delete m_spare.exchange(empty, std::memory_order_release);
    m_got = 0;
  }
  LOGLoggingEvent* const event = m_first->events[m_got++];
  m_gets.store(gets + 1, std::memory_order_release);
  return event;
}

void LOGBoundedFIFO::resize(int newSize) {
  const LOGGuard guard(*this);
  m_maxSize.store(newSize, std::memory_order_relaxed);
}
