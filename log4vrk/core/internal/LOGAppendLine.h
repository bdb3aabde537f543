// The fast path of the appenders that write lines.

#pragma once

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGLayoutInternals.h"

// Inlined, with what it calls last: a system call overwrites the processor's memory of where to return to, so each
// function that has not returned by then costs a log call as much as a lock. What comes before the lock is each
// thread's own business: threads are in each other's way only while they write.
template <typename WriteLine>
[[gnu::always_inline]] inline bool LOGAppenderInternals::appendLine(LOGAppenderSkeleton& appender,
                                                                    LOGLoggingEvent* event, WriteLine writeLine) {
  if (!admitsFast(appender, event)) return false;
  LOGLayout* const layout = appender.getLayout();
  const LOGLayoutInternals* const formatter = layout != nullptr ? LOGLayoutInternals::of(*layout) : nullptr;
  if (formatter == nullptr) return false;
  logContain(LOGAppenderSkeleton::APPEND_FAILURES, [&]() VRK_INLINED VRK_NO_THREAD_SAFETY_ANALYSIS {
    if (!appender.isAsSevereAsThreshold(event->getLevel())) return;
    const std::string_view line = formatter->formatFast(*layout, *event);
    const VRKThreadGuard guard(appender.criticalSection());  // the log call brings the rest
    if (appender.getClosed() == 1) {                         // by a thread that had the lock meanwhile
      appender.reportClosed();
    } else {
      writeLine(line);
    }
  });
  return true;
}
