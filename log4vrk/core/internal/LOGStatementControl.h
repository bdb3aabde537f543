// What decides whether a log statement logs this time, beside its level, and what it adds to the text.

#pragma once

#include <atomic>
#include <cstdint>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

// Each of the first three is a static object of its statement, initialised by the compiler.
class LOGOnce {
 public:
  bool admits() { return !m_done.load(std::memory_order_relaxed) && !m_done.exchange(true); }

 private:
  std::atomic<bool> m_done{false};
};

class LOGEveryNth {
 public:
  /// The first of each `n`; all of them when n is less than 2.
  bool admits(long long n) {
    const std::uint64_t before = m_count.fetch_add(1, std::memory_order_relaxed);
    return n < 2 || before % static_cast<std::uint64_t>(n) == 0;
  }

 private:
  std::atomic<std::uint64_t> m_count{0};
};

/// How many times a statement has not logged since it last did: " (12 left out)" behind its text, or nothing.
struct LOG4VRK_EXPORT LOGLeftOut {
  operator I18NString() const;
  std::uint64_t count = 0;
};

class LOG4VRK_EXPORT LOGEverySeconds {
 public:
  /// By a clock that nobody sets.
  bool admits(double seconds, LOGLeftOut& leftOut);

 private:
  std::atomic<std::int64_t> m_next{INT64_MIN};  // nanoseconds of the steady clock
  std::atomic<std::uint64_t> m_leftOut{0};
};

/// ": No such file or directory [2]"
struct LOG4VRK_EXPORT LOGErrorText {
  operator I18NString() const;
  int number;
};

/// Ends the process by SIGABRT when everything has been delivered.
[[noreturn]] LOG4VRK_EXPORT void logShutdownAndAbort();
