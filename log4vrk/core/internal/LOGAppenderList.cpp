#include "log4vrk/core/internal/LOGAppenderList.h"

#include <algorithm>

#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGThreadState.h"

namespace {

// With several appenders the events have one order in all of them, which takes a lock around the whole.
const LOGAppenderInternals* fastPathOf(const std::vector<LOGAppenderList::Attached>& appenders) {
  if (appenders.size() != 1) return nullptr;
  const LOGAppenderInternals* const internals = LOGAppenderInternals::ofWhole(*appenders[0].appender);
  return internals != nullptr && internals->appendFast != nullptr ? internals : nullptr;
}

}  // namespace

LOGAppenderList::LOGAppenderList(std::vector<Attached> appenders)
    : attached(std::move(appenders)), fast(fastPathOf(attached)) {}

bool LOGAppenderList::has(const LOGAppenderSkeleton* appender) const {
  return std::any_of(attached.begin(), attached.end(), [&](const Attached& each) { return each.appender == appender; });
}

int LOGAppenderList::append(LOGLoggingEvent* event, LOGThreadState& thread, const LOGAppenderUse::Place& place,
                            const LOGAppenderSkeleton* except) const {
  for (const Attached& each : attached) {
    if (each.appender == except) continue;
    if (place.load(std::memory_order_acquire) != this) {
      const LOGAppenderUse now(thread.uses.looking, place);
      if (now.list() == nullptr || !now.list()->has(each.appender)) continue;
    }
    each.appender->activateOptions();
    each.appender->doAppend(event);
  }
  return static_cast<int>(attached.size());
}

bool LOGAppenderInternals::drainAll(const LOGAppenderList& list) {
  bool isDrained = true;
  for (const LOGAppenderList::Attached& each : list.attached) {
    const LOGAppenderInternals* const internals = of(*each.appender);
    if (internals != nullptr && internals->drain != nullptr) isDrained = internals->drain(*each.appender) && isDrained;
  }
  return isDrained;
}

bool LOGAppenderInternals::leadsTo(LOGAppenderSkeleton& from, const LOGAppenderSkeleton& target) {
  if (&from == &target) return true;
  const LOGAppenderInternals* const internals = of(from);
  if (internals == nullptr || internals->attached == nullptr) return false;
  const std::shared_ptr<const LOGAppenderList> list = internals->attached(from);
  return list && std::any_of(list->attached.begin(), list->attached.end(),
                             [&](const LOGAppenderList::Attached& each) { return leadsTo(*each.appender, target); });
}
