#include "log4vrk/appenders/internal/LOGServedQueues.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <vector>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/internal/LOGExitSteps.h"
#include "log4vrk/core/internal/LOGTimeLimit.h"
#include "log4vrk/platform/VRKThread.h"

namespace {

// When a queue has not been delivered by then, its sink hangs.
constexpr std::chrono::seconds LONGEST_DRAINING{10};

using Queue = LOGQueueProgress;

struct Started {
  static Started& instance() {
    static Started& all = vrkImmortal<Started>();
    return all;
  }
  void add(const std::shared_ptr<Queue>& queue) {
    const LOGLeafGuard guard(mutex);
    // Without those that are gone, and itself: a start that failed comes again.
    const auto isOld = [&](const Entry& each) { return each.queue.expired() || each.queue.lock() == queue; };
    queues.erase(std::remove_if(queues.begin(), queues.end(), isOld), queues.end());
    queues.push_back({queue, VRKThread::forks()});
  }
  // Without that of the calling thread, who would wait for itself.
  std::vector<std::shared_ptr<Queue>> served() {
    std::vector<std::shared_ptr<Queue>> all;
    const LOGLeafGuard guard(mutex);
    for (const Entry& each : queues) {
      std::shared_ptr<Queue> queue = each.queue.lock();
      const bool served = each.forks == VRKThread::forks() && queue && queue->servedBy != VRKThread::currentThreadId();
      if (served) all.push_back(std::move(queue));
    }
    return all;
  }
  // An event may have to pass several queues, each of which another one leads to: hence the rounds.
  static void deliver(LOGExitSteps::Clock::time_point until) {
    try {
      const std::vector<std::shared_ptr<Queue>> all = instance().served();
      for (std::size_t round = 0; round < all.size(); ++round) {
        for (const std::shared_ptr<Queue>& queue : all) {
          const std::uint64_t end = queue->putSoFar();
          logWaitUntil(until, [&] { return queue->delivered.load() >= end; });
        }
      }
    } catch (const std::bad_alloc&) {
      // There is no memory even for the list, and nobody left to tell.
    }
  }

  struct Entry {
    std::weak_ptr<Queue> queue;
    unsigned forks;  // of the process whose dispatcher serves it
  };
  VRKMutex mutex;
  std::vector<Entry> queues VRK_GUARDED_BY(mutex);
  const bool deliversAtExit = LOGExitSteps::set(LOGExitSteps::QUEUES, &deliver);
};

}  // namespace

void LOGServedQueues::add(const std::shared_ptr<Queue>& queue) { Started::instance().add(queue); }

std::chrono::steady_clock::time_point LOGServedQueues::latestDrained() { return LOGTimeLimit::until(LONGEST_DRAINING); }
