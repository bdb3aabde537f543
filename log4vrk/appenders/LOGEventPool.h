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

  /// Deletes the event when the pool is full, or when its text is too large to be kept.
  void give(std::unique_ptr<LOGLoggingEvent> event) {
    std::atomic<LOGLoggingEvent*>& slot = m_slots[m_given % SIZE];
    if (slot.load(std::memory_order_acquire) != nullptr || !event->limitMemory(MOST_TEXT)) return;
    slot.store(event.release(), std::memory_order_release);
    ++m_given;
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
  static constexpr std::size_t SIZE = 1024;
  static constexpr std::size_t MOST_TEXT = 4096;  // in bytes

  std::atomic<LOGLoggingEvent*> m_slots[SIZE] = {};
  alignas(64) std::size_t m_given = 0;
  alignas(64) std::size_t m_taken = 0;
};
