#include "log4vrk/net/internal/LOGOutbox.h"

#include <algorithm>
#include <utility>

#include "log4vrk/core/LOGGuard.h"

void LOGOutbox::use(std::unique_ptr<VRKMappedFile> file) {
  m_path = file->path();
  m_ring.use(std::move(file));
  m_usable = true;
}

LOGOutbox::Result LOGOutbox::put(const LOGEncodedEvent& event) {
  {
    const LOGLeafGuard guard(m_mutex);
    if (m_closed) return CLOSED;
    const bool wasTaken = m_taken == m_ring.tail();
    const std::uint64_t sequence = m_last.load(std::memory_order_relaxed) + 1;
    if (!m_ring.put(event, sequence)) return FULL;
    m_last.store(sequence, std::memory_order_release);
    const bool wasHalfFull = std::exchange(m_wasHalfFull, m_ring.usesAtLeast(MOST_BYTES / 2));
    if (!wasTaken && (wasHalfFull || !m_wasHalfFull)) return TAKEN;
  }
  m_wakeUp.wake();
  return TAKEN;
}

bool LOGOutbox::take() {
  const LOGLeafGuard guard(m_mutex);
  m_taken = m_ring.tail();
  return hasTaken();
}

void LOGOutbox::pass() {
  m_ring.pass();
  ++m_passed;
}

void LOGOutbox::release(std::uint64_t before) {
  const std::uint64_t last = std::min(before - 1, m_passed);
  if (last <= m_released) return;
  m_ring.release(before);
  m_released = last;
  moves = true;
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

// Log calls that come now find the queue closed, and look no further.
void LOGOutbox::end() {
  const LOGLeafGuard guard(m_mutex);
  if (!m_closed || !m_usable) return;
  if (m_ring.used() == 0) m_ring.file().remove();
  m_ring.leave();
  m_usable = false;
}

std::uint64_t LOGOutbox::giveUp() {
  const std::uint64_t left = inMemory();
  if (m_givenUp.exchange(true)) return 0;
  if (!lasts()) dropped += left;
  return left;
}
