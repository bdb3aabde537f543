// What the library still does when the process exits without a shutdown.

#pragma once

#include <chrono>

/// Three steps, one behind the other: what is queued reaches its appenders, what they send is acknowledged or kept, and
/// what they have buffered is written. Each step is above this folder, so its owner leaves it here, at the latest when
/// there is something to do. A step that nobody has left costs nothing.
///
/// The steps run once, when main() has returned or exit() has been called, after the program's own destructors, which
/// may still log. exit() may have been called anywhere: inside a log call, on a thread of the library, in the child of
/// a fork.
///
/// Thread safety: any thread.
class LOGExitSteps {
 public:
  using Clock = std::chrono::steady_clock;
  /// Returns at `until` at the latest, and raises nothing.
  using Step = void (*)(Clock::time_point until);
  enum Place { QUEUES, CONNECTIONS, BUFFERS, PLACES };

  static bool set(Place place, Step step);
};
