// What asynchronous appenders have in common, whatever their queues are made of.

#pragma once

#include <atomic>
#include <memory>

#include "log4vrk/appenders/internal/LOGQueueProgress.h"
#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGWaiting.h"
#include "log4vrk/platform/VRKThrowable.h"

/// The queues of the process that have a dispatcher.
///
/// Thread safety: any thread.
struct LOGServedQueues {
  /// From now on the process's exit waits for what is queued, for about a second.
  static void add(const std::shared_ptr<LOGQueueProgress>& queue);
  /// Returns when what is queued now has been delivered or `isClosed()`, or after ten seconds, and then false. Not on
  /// the thread of a queue: one that waited for its own would wait for itself, and two could wait for each other.
  template <typename IsClosed>
  static bool drain(const LOGQueueProgress& queue, IsClosed isClosed);

  /// Ends a dispatcher that has been taken from its appender, and has `letGo()` called at the end. No lock is held
  /// meanwhile: what it delivers to may want any of them.
  template <typename Dispatcher, typename LetGo>
  static void finish(std::unique_ptr<Dispatcher> dispatcher, LetGo letGo);

  /// Puts again and again while there is no space. `isInVain()` says that there is nobody to make any.
  template <typename Outcome, typename Put, typename IsInVain>
  static Outcome waitForSpace(LOGQueueProgress& queue, std::atomic<int>& interrupted, Outcome full, Put put,
                              IsInVain isInVain);

 private:
  static std::chrono::steady_clock::time_point latestDrained();

  // Counts a log call that waits. The dispatcher does not close the queue before it has made space for all that do:
  // close() promises to deliver what was logged before it.
  class Counted {
   public:
    explicit Counted(std::atomic<int>& count) : m_count(count) { ++m_count; }
    ~Counted() { --m_count; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

   private:
    std::atomic<int>& m_count;
  };
};

template <typename IsClosed>
bool LOGServedQueues::drain(const LOGQueueProgress& queue, IsClosed isClosed) {
  const std::uint64_t end = queue.putSoFar();
  return logWaitUntil(latestDrained(), [&] { return queue.delivered.load() >= end || isClosed(); });
}

template <typename Dispatcher, typename LetGo>
void LOGServedQueues::finish(std::unique_ptr<Dispatcher> dispatcher, LetGo letGo) {
  logContain({"LOGAsyncAppender::close --- ", "LOGAsyncAppender::close --- ",
              "Got an Exception while waiting for the dispatcher to finish."},
             [&] {
               // An appender behind the queue may close it, on the dispatcher's own thread, which cannot wait for
               // itself.
               if (dispatcher->isItself()) {
                 dispatcher.release()->closeItself();
               } else {
                 dispatcher->close();
               }
             });
  logContain({"LOGAsyncAppender::close --- ", "LOGAsyncAppender::close --- ",
              "LOGAsyncAppender::close --- An unknown exception has occured."},
             [&] {
               dispatcher.reset();
               letGo();
             });
}

// Waits without a lock. An event that a dispatcher itself had put off cannot wait: that dispatcher may be the one that
// would have to make space.
template <typename Outcome, typename Put, typename IsInVain>
Outcome LOGServedQueues::waitForSpace(LOGQueueProgress& queue, std::atomic<int>& interrupted, Outcome full, Put put,
                                      IsInVain isInVain) {
  const Counted waiting(queue.waiting);
  LOGPolling polling;
  for (;;) {
    const bool inVain = isInVain() || LOGDeferral::mustNotWait();
    const Outcome outcome = put();
    if (outcome != full || inVain) return outcome;
    if (polling.beginsPeriod()) LOGLogLog::debug("Waiting for free space in buffer, ");
    try {
      polling.waitShortly();
    } catch (const VRKThrowable&) {
      LOGLogLog::warn(interrupted.exchange(1) == 0 ? "AsyncAppender interrupted." : "AsyncAppender interrupted again.");
    }
  }
}
