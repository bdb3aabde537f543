// Events on their way back from a dispatcher to those who log.

#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "log4vrk/core/LOGLoggingEvent.h"

/// Used events keep the memory of their texts, so that a log call that fills one again allocates nothing, and no memory is freed
/// by another thread than the one that took it, which is what makes an allocator slow.
///
/// Thread safety: one thread at a time that gives, one that takes; they may run at once.
/// Ownership: events in the pool are its own.
class LOGEventPool {
 public:
  LOGEventPool() = default;
  LOGEventPool(const LOGEventPool&) = delete;
  LOGEventPool& operator=(const LOGEventPool&) = delete;
  ~LOGEventPool() {
    for (std::atomic<LOGLoggingEvent*>& slot : m_slots) delete slot.load();
  }

  /// Deletes the event when the pool is full, or when it is too large to be kept. Otherwise it can be taken once there are enough
  /// of them: one at a time, both sides would fight for the cache line of the slots.
  void give(std::unique_ptr<LOGLoggingEvent> event) {
    if (!event->isSmall(MOST_TEXT)) return;
    m_kept[m_keptCount++] = std::move(event);
    if (m_keptCount < TOGETHER) return;
    for (std::unique_ptr<LOGLoggingEvent>& kept : m_kept) publish(std::move(kept));
    m_keptCount = 0;
  }

  /// Null when there is none.
  std::unique_ptr<LOGLoggingEvent> take() {
    std::atomic<LOGLoggingEvent*>& slot = m_slots[m_taken % SIZE];
    LOGLoggingEvent* const event = slot.load(std::memory_order_acquire);
    if (event == nullptr) return nullptr;
    slot.store(nullptr, std::memory_order_release);
    ++m_taken;
    return std::unique_ptr<LOGLoggingEvent>(event);
  }

 private:
  static constexpr std::size_t SIZE = 8192;
  static constexpr std::size_t TOGETHER = 16;
  static constexpr std::size_t MOST_TEXT = 4096;  // in bytes

  void publish(std::unique_ptr<LOGLoggingEvent> event) {
    std::atomic<LOGLoggingEvent*>& slot = m_slots[m_given % SIZE];
    if (slot.load(std::memory_order_acquire) != nullptr) return;
    slot.store(event.release(), std::memory_order_release);
    ++m_given;
  }

  std::atomic<LOGLoggingEvent*> m_slots[SIZE] = {};
  alignas(64) std::unique_ptr<LOGLoggingEvent> m_kept[TOGETHER];
  std::size_t m_keptCount = 0;
  std::size_t m_given = 0;
  alignas(64) std::size_t m_taken = 0;
};
