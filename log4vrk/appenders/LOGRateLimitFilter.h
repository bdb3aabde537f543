// The filter that denies what comes too often.

#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "log4vrk/core/LOGFilter.h"

class LOGLevel;

/// Passes so many events in a period and denies the others. A period begins with the first event after the one before
/// has ended, by a clock that nobody sets. When it has ended, the next event that the appender writes is preceded by
/// one that says how many were left out: with logger, level, thread, context and time of the first of them. The last
/// number is written when the library closes the appender.
///
/// Thread safety: as LOGFilter.
/// Ownership: the level is lent, and must outlive the filter.
/// Errors: a number that nobody was told of is a warning in the internal log when the filter is deleted. An event that
/// is null raises VRKAssertError while there is a limit.
class LOG4VRK_EXPORT LOGRateLimitFilter : public LOGFilter {
 public:
  LOGRateLimitFilter();
  /// A copy has the settings and counts anew.
  LOGRateLimitFilter(const LOGRateLimitFilter& other);
  LOGRateLimitFilter& operator=(const LOGRateLimitFilter&) = delete;
  ~LOGRateLimitFilter() override;

  /// DENY or NEUTRAL.
  int decide(LOGLoggingEvent* event) override;
  LOGRateLimitFilter* clone() const override;

  /// How many pass in a period. With 0, the default, or less there is no limit.
  void setMaxEvents(long events) { m_maxEvents = events; }
  long getMaxEvents() const { return m_maxEvents; }
  /// How long a period is; 1 at first. With 0 or less there is no limit.
  void setSeconds(long seconds) { m_seconds = seconds; }
  long getSeconds() const { return m_seconds; }
  /// Events of higher levels pass and are not counted. Null, as it is at first: there are none.
  void setLevel(LOGLevel* level) { m_level = level; }
  LOGLevel* getLevel() const { return m_level; }

 private:
  using Clock = std::chrono::steady_clock;
  LOG4VRK_HIDDEN static const struct LOGFilterInternals INTERNALS;

  LOG4VRK_HIDDEN bool isOver(Clock::time_point now) const;
  LOG4VRK_HIDDEN std::unique_ptr<LOGLoggingEvent> takeNotice(bool isLast);

  long m_maxEvents = 0;
  long m_seconds = 1;
  LOGLevel* m_level = nullptr;
  std::optional<Clock::time_point> m_begin;  // of the period
  long m_passed = 0;                         // in this period
  bool m_isDue = false;                      // the period of what was left out has ended
  std::uint64_t m_leftOut = 0;
  std::unique_ptr<LOGLoggingEvent> m_first;  // of those left out
};
