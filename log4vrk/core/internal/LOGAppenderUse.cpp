#include "log4vrk/core/internal/LOGAppenderUse.h"

#include <algorithm>
#include <iterator>
#include <new>

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

namespace {

// For a list that somebody may use when there is no memory to remember it by: it lives for good.
void keepForGood(std::shared_ptr<const LOGAppenderList> list) {
  using Share = std::shared_ptr<const LOGAppenderList>;
  alignas(Share) unsigned char place[sizeof(Share)];
  new (place) Share(std::move(list));  // never destroyed
}

// Appends without losing any.
void append(LOGAppenderUse::Lists& to, LOGAppenderUse::Lists& lists) {
  try {
    to.reserve(to.size() + lists.size());
    to.insert(to.end(), std::make_move_iterator(lists.begin()), std::make_move_iterator(lists.end()));
  } catch (const std::bad_alloc&) {
    for (std::shared_ptr<const LOGAppenderList>& list : lists) keepForGood(std::move(list));
  }
  lists.clear();
}

}  // namespace

void LOGAppenderUse::letGo(Lists earlier) {
  if (earlier.empty()) return;
  LOGThreadState& thread = LOGThreadState::current();
  if (thread.deferral.calls > 0 || thread.gate.serves) {
    append(thread.deferral.lists, earlier);
    thread.deferral.hasRest = true;
    return;
  }
  // Who has come to a list before it was replaced, and is not seen to use it yet, will find out that it is not current.
  VRKAsymmetricFence::order();
  for (const std::shared_ptr<const List>& list : earlier) {
    while (isUsed(thread, list.get())) logNap();
  }
}

// In a destructor: it takes no memory that it cannot do without.
void LOGAppenderUse::finish(LOGThreadState& thread, Lists& earlier) {
  if (earlier.empty()) return;
  VRKAsymmetricFence::order();
  const milliseconds limit = thread.gate.serves ? milliseconds(0) : LONGEST_WAIT_AFTER_A_CALL;
  const auto deadline = std::chrono::steady_clock::now() + limit;
  dropUnused(earlier, [&](const List* list) { return logWaitUntil(deadline, [&] { return !isUsed(thread, list); }); });
  if (!thread.gate.serves) leave(earlier);
}

void LOGAppenderUse::leave(Lists& lists) {
  if (lists.empty()) return;
  const LOGThreadState& thread = LOGThreadState::current();
  // Freed without the lock: with its last list an appender that the configurator made closes.
  Lists all;
  {
    const VRKMutexGuard guard(g_leftMutex);
    all.swap(g_left);
  }
  append(all, lists);
  dropUnused(all, [&](const List* list) { return !isUsed(thread, list); });
  const VRKMutexGuard guard(g_leftMutex);
  append(g_left, all);
}

template <typename IsUnused>
void LOGAppenderUse::dropUnused(Lists& lists, IsUnused isUnused) {
  lists.erase(std::remove_if(lists.begin(), lists.end(),
                             [&](const std::shared_ptr<const List>& each) { return isUnused(each.get()); }),
              lists.end());
}
