#include "log4vrk/net/internal/LOGOutbox.h"

#include <algorithm>

#include "log4vrk/core/LOGGuard.h"

// Whether so many halves are in use.
bool LOGOutbox::holds(std::size_t halves) const {
  return m_events.size() >= MOST_EVENTS * halves / 2 || m_bytes >= MOST_BYTES * halves / 2;
}

LOGOutbox::Result LOGOutbox::put(LOGEncodedEvent& event) {
  {
    const LOGLeafGuard guard(m_mutex);
    if (m_closed) return CLOSED;
    if (holds(2)) return FULL;
    const bool wasEmpty = m_events.empty();
    const bool wasHalfFull = holds(1);
    const std::size_t size = event.text.size();
    m_events.push_back(std::move(event));
    m_events.back().sequence = ++m_sequence;
    m_bytes += size;
    ++inMemory;
    if (!wasEmpty && (wasHalfFull || !holds(1))) return TAKEN;
  }
  m_wakeUp.wake();
  return TAKEN;
}

void LOGOutbox::takeAll(std::deque<LOGEncodedEvent>& events) {
  const LOGLeafGuard guard(m_mutex);
  events.swap(m_events);
  m_bytes = 0;
}

bool LOGOutbox::isFull() {
  const LOGLeafGuard guard(m_mutex);
  return holds(2);
}

bool LOGOutbox::isHalfFull() {
  const LOGLeafGuard guard(m_mutex);
  return holds(1);
}

void LOGOutbox::close(Clock::time_point farewellUntil) {
  {
    const LOGLeafGuard guard(m_mutex);
    m_closed = true;
    m_farewellUntil = std::min(m_farewellUntil, farewellUntil);
  }
  m_wakeUp.wake();
}

bool LOGOutbox::isClosed() {
  const LOGLeafGuard guard(m_mutex);
  return m_closed;
}

LOGOutbox::Clock::time_point LOGOutbox::farewellUntil() {
  const LOGLeafGuard guard(m_mutex);
  return m_farewellUntil;
}

std::int64_t LOGOutbox::giveUp() {
  const std::int64_t left = std::max<std::int64_t>(inMemory.exchange(0), 0);
  dropped += static_cast<std::uint64_t>(left);
  return left;
}
