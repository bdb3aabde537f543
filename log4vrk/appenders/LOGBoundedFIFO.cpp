#include "log4vrk/appenders/LOGBoundedFIFO.h"

#include <utility>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/platform/VRKThrowable.h"

// Events in a row. The counter of elements publishes what the putting side has written, and the link to the next block.
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

bool LOGBoundedFIFO::put(LOGLoggingEvent* event) {
  if (isFull()) {
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
  m_numElements.fetch_add(1, std::memory_order_acq_rel);
  return true;
}

LOGLoggingEvent* LOGBoundedFIFO::get() {
  if (length() == 0) return nullptr;
  if (m_got == Block::SIZE) {
    Block* const empty = std::exchange(m_first, m_first->next);
    delete m_spare.exchange(empty, std::memory_order_release);
    m_got = 0;
  }
  LOGLoggingEvent* const event = m_first->events[m_got++];
  m_numElements.fetch_sub(1, std::memory_order_acq_rel);
  return event;
}

void LOGBoundedFIFO::resize(int newSize) {
  const LOGGuard guard(*this);
  m_maxSize.store(newSize, std::memory_order_relaxed);
}
