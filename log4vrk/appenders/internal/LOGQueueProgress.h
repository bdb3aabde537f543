// How far a queue and its dispatcher are, whatever the queue is made of.

#pragma once

#include <atomic>
#include <cstdint>

#include "log4vrk/platform/VRKExport.h"

/// For those who wait until what is queued now has been delivered.
///
/// Thread safety: any thread.
class LOG4VRK_EXPORT LOGQueueProgress {
 public:
  LOGQueueProgress() = default;
  LOGQueueProgress(const LOGQueueProgress&) = delete;
  LOGQueueProgress& operator=(const LOGQueueProgress&) = delete;

  /// Up to where something has been put since the queue was made.
  virtual std::uint64_t putSoFar() const = 0;
  /// Up to where it has been delivered. Only the getting side changes it.
  std::atomic<std::uint64_t> delivered{0};
  /// The number of the dispatcher's thread; 0 before it runs.
  std::atomic<long> servedBy{0};
  /// Log calls that wait for space.
  std::atomic<int> waiting{0};

 protected:
  virtual ~LOGQueueProgress() = default;
};
