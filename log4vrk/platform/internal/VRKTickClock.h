// Moments from the processor's counter, between two looks at the system's clock.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "log4vrk/platform/internal/VRKTime.h"

/// One look at a clock, and what the counter said right after it.
struct VRKTickReading {
  std::uint64_t ticks = 0;
  VRKTime::Moment moment{};
  bool isWhole = false;  // nothing came in between the two
};

/// Finds out how long a tick of the counter lasts, by comparing the counter with a clock whose rate nobody changes.
///
/// Two stretches of time in a row have to agree. A counter that began anew, because the machine slept or was moved to
/// another host, and a reading that was held up, would make a rate that is good for nothing.
///
/// Thread safety: not thread-safe.
class VRKTickRate {
 public:
  static constexpr int FRACTION = 32;  // bits behind the point of the rate

  /// To be called again and again until it returns something other than 0: the nanoseconds of a tick with FRACTION
  /// bits behind the point, shortened as cautionedRate() says.
  std::uint64_t compare(const VRKTickReading& now) {
    if (!now.isWhole) return 0;
    const double elapsed = static_cast<double>(now.moment.seconds - m_last.moment.seconds) * 1e9 +
                           (now.moment.nanoseconds - m_last.moment.nanoseconds);
    if (m_last.isWhole && elapsed >= 0 && elapsed < SHORTEST_STRETCH) return 0;
    const double rate = m_last.isWhole ? elapsed / static_cast<double>(now.ticks - m_last.ticks) : 0;
    const bool agrees = std::abs(rate - m_rate) <= TOLERANCE * m_rate;
    const bool isRate = rate >= LEAST_RATE && rate <= LARGEST_RATE;
    const double slower = std::min(rate, m_rate);
    m_last = now;
    m_rate = isRate ? rate : 0;
    return isRate && agrees ? cautionedRate(slower) : 0;
  }

 private:
  static constexpr double SHORTEST_STRETCH = 10e6;               // nanoseconds
  static constexpr double LEAST_RATE = 0.125, LARGEST_RATE = 2;  // what processors have, in nanoseconds for a tick
  static constexpr double TOLERANCE = 0.001;

  /// The system can be told to run its clock slower by a tenth and a little more, at any time. Going by the counter
  /// must not overtake it then.
  static std::uint64_t cautionedRate(double rate) {
    return static_cast<std::uint64_t>(0.895 * rate * static_cast<double>(std::uint64_t{1} << FRACTION));
  }

  VRKTickReading m_last;
  double m_rate = 0;  // of the stretch that ended with m_last; 0 when there is none
};

/// What a thread saw when it last asked the system for the time, and for a short while the time itself.
///
/// Thread safety: not thread-safe; one for each thread. Without a constructor that has to run, so that it can be a
/// variable of a thread in a library that is loaded late.
class VRKTickWindow {
 public:
  /// Nanoseconds. The moments may be behind by a tenth of that, and by twice as much where the system runs its clock
  /// faster.
  static constexpr std::int32_t LONGEST_USE = 400000;

  /// The moment at `ticks`. False when the system has to be asked: the window is over, the counter is behind it, as it
  /// may be on another processor, or a second ends.
  bool tell(std::uint64_t ticks, std::uint64_t rate, VRKTime::Moment& moment) const {
    const std::uint64_t elapsed = ticks - m_ticks;
    if (elapsed >= MOST_TICKS) return false;
    const auto passed = static_cast<std::int32_t>(elapsed * rate >> VRKTickRate::FRACTION);
    moment = {m_seconds, m_nanoseconds + passed};
    return passed < LONGEST_USE && moment.nanoseconds < 1000000000;
  }

  /// After a reading that is not whole it is of no use.
  void begin(const VRKTickReading& now) {
    m_ticks = now.isWhole ? now.ticks : now.ticks - MOST_TICKS;
    m_seconds = now.moment.seconds;
    m_nanoseconds = now.moment.nanoseconds;
  }

 private:
  static constexpr std::uint64_t MOST_TICKS = 1 << 24;  // more than LONGEST_USE has, and as many as a product can hold

  std::uint64_t m_ticks = 0;
  std::int64_t m_seconds = 0;
  std::int32_t m_nanoseconds = 0;
};
