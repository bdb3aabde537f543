// What the threads that serve queues have in common.

#pragma once

#include <atomic>
#include <memory>
#include <new>

#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGAppenderList.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/core/internal/LOGWaiting.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/VRKThrowable.h"

/// How many events at most are collected for one write to the kernel. There is a limit because a fork waits for them.
constexpr int LOG_MOST_AT_ONCE = 512;

/// For its life the appenders of a list may hold back what the thread appends.
class LOGHoldingBack {
 public:
  explicit LOGHoldingBack(const LOGAppenderList& list) : m_list(list) {
    for (const LOGAppenderList::Attached& each : list.attached) {
      const LOGAppenderInternals* const internals = LOGAppenderInternals::of(*each.appender);
      const bool holdsBack = internals != nullptr && internals->holdBack != nullptr;
      if (holdsBack) internals->holdBack(*each.appender);
      m_all = m_all && holdsBack;
    }
  }
  ~LOGHoldingBack() {
    for (const LOGAppenderList::Attached& each : m_list.attached) {
      const LOGAppenderInternals* const internals = LOGAppenderInternals::of(*each.appender);
      if (internals != nullptr && internals->release != nullptr) internals->release(*each.appender);
    }
  }
  LOGHoldingBack(const LOGHoldingBack&) = delete;
  LOGHoldingBack& operator=(const LOGHoldingBack&) = delete;

  bool all() const { return m_all; }

 private:
  const LOGAppenderList& m_list;
  bool m_all = true;
};

/// A dispatcher whose thread shortage of memory does not end: those who log rely on it.
template <typename Dispatcher>
class LOGLastingDispatcher final : public Dispatcher {
 public:
  using Dispatcher::Dispatcher;

  void start() override {
    if (!m_reserved) m_reserved = std::make_unique<LOGThreadState::Reserved>();
    Dispatcher::start();
  }
  void run() override {
    m_reserved->use();
    for (;;) {
      try {
        return Dispatcher::run();  // which may delete this object
      } catch (const std::bad_alloc&) {
        logNap();
      }
    }
  }

 private:
  std::unique_ptr<LOGThreadState::Reserved> m_reserved;
};

/// Serves the queue until `interrupted` and everything has been delivered. The queue is closed only when no log call
/// waits for space any more, and the function returns only when it is empty: so everything that was accepted is
/// delivered. `deliverSome()` says whether there was something.
template <typename Queue, typename DeliverSome, typename IsEmpty>
void logServeQueue(Queue& queue, const std::atomic<int>& interrupted, DeliverSome deliverSome, IsEmpty isEmpty) {
  // How often the thread, when it ends, tries again to deliver what it has put off. A logger that is in use all that
  // time may be waiting for this very thread to end.
  constexpr int LAST_ATTEMPTS = 100;
  const LOGDeferral::DispatcherThread here;
  LOGPolling polling;
  const auto rest = [&] {
    try {
      polling.wait();
    } catch (const VRKThrowable&) {
      // Then it looks again at once.
    }
  };
  for (bool closed = false;;) {
    if (!closed && interrupted != 0 && queue.waiting == 0) {
      queue.close();
      closed = true;
    }
    const bool delivered = deliverSome();
    LOGDeferral::deliverPutOff();
    if (delivered) {
      polling.reset();
    } else if (closed && isEmpty()) {
      break;
    } else {
      rest();
    }
  }
  for (int attempt = 0; !LOGDeferral::deliverPutOff() && attempt < LAST_ATTEMPTS; ++attempt) rest();
}
