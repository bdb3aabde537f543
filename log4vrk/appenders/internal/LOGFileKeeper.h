// The thread that tidies finished log files.

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

#include "log4vrk/appenders/internal/LOGFileHistory.h"
#include "log4vrk/platform/VRKThread.h"

/// Has a history tidied whenever it is woken, at a low priority, and again some seconds later what was left.
///
/// Thread safety: any thread.
/// Errors: wake() raises VRKSystemError when the system has no thread to give; the next call tries again.
/// Forks: useless in a child, and not to be destroyed there: its locks may be taken for ever.
class LOGFileKeeper : private VRKThread {
 public:
  using Clock = std::chrono::steady_clock;

  explicit LOGFileKeeper(LOGFileHistory history);
  ~LOGFileKeeper() override;

  /// `begin` is that of the current period.
  void wake(std::int64_t begin);
  /// What is to be done is done until then, and the thread ends. A compression that takes longer is given up.
  void finish(Clock::time_point until);

 private:
  void run() override;
  bool isOver();
  std::optional<std::int64_t> nextWork(bool hasRest);

  LOGFileHistory m_history;  // the thread's
  std::mutex m_mutex;        // of what follows
  std::condition_variable m_changed;
  std::optional<std::int64_t> m_work;
  std::int64_t m_begin = 0;
  std::optional<Clock::time_point> m_end;
};
