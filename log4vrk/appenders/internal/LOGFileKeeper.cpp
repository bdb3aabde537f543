#include "log4vrk/appenders/internal/LOGFileKeeper.h"

#include <utility>

#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/platform/internal/VRKProcess.h"
#include "log4vrk/platform/internal/VRKStackSize.h"

namespace {

constexpr std::chrono::seconds UNTIL_NEXT_ATTEMPT{5};

}  // namespace

LOGFileKeeper::LOGFileKeeper(LOGFileHistory history) : VRKThread(VRK_STACK_SIZE), m_history(std::move(history)) {}

LOGFileKeeper::~LOGFileKeeper() { finish(Clock::now()); }

void LOGFileKeeper::wake(std::int64_t begin) {
  {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_end) return;
    m_work = m_begin = begin;
  }
  m_changed.notify_one();
  start();
}

void LOGFileKeeper::finish(Clock::time_point until) {
  {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!m_end || until < *m_end) m_end = until;
  }
  m_changed.notify_one();
  join();
}

bool LOGFileKeeper::isOver() {
  const std::lock_guard<std::mutex> guard(m_mutex);
  return m_end && Clock::now() >= *m_end;
}

// Nothing when the thread is to end.
std::optional<std::int64_t> LOGFileKeeper::nextWork(bool hasRest) {
  std::unique_lock<std::mutex> lock(m_mutex);
  const auto isWoken = [&] { return m_work || m_end; };
  if (!hasRest) {
    m_changed.wait(lock, isWoken);
  } else if (!m_changed.wait_for(lock, UNTIL_NEXT_ATTEMPT, isWoken)) {
    return m_begin;
  }
  return std::exchange(m_work, std::nullopt);
}

void LOGFileKeeper::run() {
  VRKProcess::lowerPriorityOfThread();
  bool hasRest = false;
  while (const std::optional<std::int64_t> begin = nextWork(hasRest)) {
    hasRest = true;
    logContainAll({"LOGTimeRollingFileAppender -- could not tidy", "LOGTimeRollingFileAppender -- could not tidy",
                   "LOGTimeRollingFileAppender -- could not tidy"},
                  [&] { hasRest = !m_history.tidy(*begin, [this] { return isOver(); }); });
  }
}
