// What appenders do alike in appendPlain(). Inlined, with what it calls last: the processor remembers only so many
// calls that have not returned yet across the system call at the end, and each that it forgets costs a log call as much
// as a lock.

#pragma once

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGContainment.h"

// What comes before the lock is the threads' own business, so that they get in each other's way only while they write.
template <typename Write>
[[gnu::always_inline]] inline bool LOGAppenderSkeleton::appendFormatted(LOGLoggingEvent& event, Write write) {
  if (getClosed() == 1 || getFilter() != nullptr) return false;
  bool done = true;
  logContain(APPEND_FAILURES, [&]() VRK_INLINED VRK_NO_THREAD_SAFETY_ANALYSIS {
    if (!isAsSevereAsThreshold(event.getLevel())) return;
    LOGLayout* const layout = getLayout();
    std::string_view line;
    done = layout != nullptr && layout->formatPlain(event, line);
    if (!done) return;
    const VRKThreadGuard guard(m_critSection);  // the log call brings the rest
    done = getClosed() != 1 && write(line);
  });
  return done;
}
