// How long a configuration run may wait for what is outside of it.

#pragma once

#include <chrono>

/// For its life, whatever the thread waits for in queues, log servers and name servers takes no longer than this in
/// all. It is a scope because a run comes to those who wait by the virtual functions of appenders, which programs
/// override.
///
/// Thread safety: made by one thread at a time, which holds the configuration lock; any thread asks. Does not nest.
class LOGTimeLimit {
 public:
  using Clock = std::chrono::steady_clock;

  explicit LOGTimeLimit(std::chrono::milliseconds limit);
  ~LOGTimeLimit();
  LOGTimeLimit(const LOGTimeLimit&) = delete;
  LOGTimeLimit& operator=(const LOGTimeLimit&) = delete;

  /// When a wait of the calling thread has to end that takes `longest` where there is no limit.
  static Clock::time_point until(Clock::duration longest);
  /// Whether the calling thread has a limit.
  static bool isSet();
};
