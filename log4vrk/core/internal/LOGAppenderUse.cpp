#include "log4vrk/core/internal/LOGAppenderUse.h"

#include <algorithm>
#include <iterator>

#include "log4vrk/core/internal/LOGAppenderList.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/core/internal/LOGWaiting.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKMutex.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds LONGEST_WAIT_AFTER_A_CALL{2000};

// Lists that were still in use when nobody could wait for their end. They keep the appenders that they share.
VRKMutex g_leftMutex;
LOGAppenderUse::Lists& g_left VRK_GUARDED_BY(g_leftMutex) = vrkImmortal<LOGAppenderUse::Lists>();

}  // namespace

bool LOGAppenderUse::isUsed(const LOGThreadState& self, const List* list) {
  return LOGThreadState::any([&](const LOGThreadState& state) {
    return &state != &self && (state.uses.delivering.load() == list || state.uses.looking.load() == list);
  });
}

void LOGAppenderUse::letGo(Lists earlier) {
  if (earlier.empty()) return;
  LOGThreadState& thread = LOGThreadState::current();
  if (thread.deferral.calls > 0 || thread.gate.serves) {
    LOGDeferral::Thread& later = thread.deferral;
    later.lists.insert(later.lists.end(), std::make_move_iterator(earlier.begin()),
                       std::make_move_iterator(earlier.end()));
    later.hasRest = true;
    return;
  }
  // Who has come to a list before it was replaced, and is not seen to use it yet, will find out that it is not current.
  VRKAsymmetricFence::order();
  for (const std::shared_ptr<const List>& list : earlier) {
    while (isUsed(thread, list.get())) logNap();
  }
}

void LOGAppenderUse::finish(LOGThreadState& thread, Lists& earlier) {
  if (earlier.empty()) return;
  VRKAsymmetricFence::order();
  const milliseconds limit = thread.gate.serves ? milliseconds(0) : LONGEST_WAIT_AFTER_A_CALL;
  const auto deadline = std::chrono::steady_clock::now() + limit;
  Lists used;
  for (std::shared_ptr<const List>& list : earlier) {
    if (!logWaitUntil(deadline, [&] { return !isUsed(thread, list.get()); })) used.push_back(std::move(list));
  }
  earlier = std::move(used);
  if (earlier.empty() || thread.gate.serves) return;
  leave(std::move(earlier));
  earlier.clear();
}

void LOGAppenderUse::leave(Lists lists) {
  const LOGThreadState& thread = LOGThreadState::current();
  Lists unused;  // freed after the lock: with its last list an appender that the configurator made closes
  const VRKMutexGuard guard(g_leftMutex);
  g_left.insert(g_left.end(), std::make_move_iterator(lists.begin()), std::make_move_iterator(lists.end()));
  const auto firstUnused =
      std::stable_partition(g_left.begin(), g_left.end(),
                            [&](const std::shared_ptr<const List>& each) { return isUsed(thread, each.get()); });
  unused.assign(std::make_move_iterator(firstUnused), std::make_move_iterator(g_left.end()));
  g_left.erase(firstUnused, g_left.end());
}
