#include <cmath>

#include "log4vrk/platform/internal/VRKTickClock.h"
#include "log4vrk/platform/internal/VRKTime.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

constexpr std::int64_t SECOND = 1000000000;
constexpr std::int64_t MOST_BEHIND = 100000;

std::int64_t inNanoseconds(const VRKTime::Moment& moment) { return moment.seconds * SECOND + moment.nanoseconds; }

VRKTime::Moment asMoment(std::int64_t nanoseconds) {
  return {nanoseconds / SECOND, static_cast<std::int32_t>(nanoseconds % SECOND)};
}

std::int64_t systemTime() {
  timespec time;
  clock_gettime(CLOCK_REALTIME, &time);
  return inNanoseconds({time.tv_sec, static_cast<std::int32_t>(time.tv_nsec)});
}

// A machine whose counter makes 5 ticks in 2 nanoseconds, and whose clock can be slewed and set.
struct Machine {
  // Compares as often as it takes, ten milliseconds apart; after the comparison of that number it is disturbed.
  std::uint64_t calibrate(void (*disturb)(Machine&) = nullptr, int at = -1) {
    std::uint64_t perTick = 0;
    for (int i = 0; i < 10 && perTick == 0; ++i) {
      perTick = rate.compare({ticks, asMoment(even), true});
      pass(10 * 1000 * 1000);
      if (i == at) disturb(*this);
    }
    return perTick;
  }
  void pass(std::int64_t nanoseconds) {
    even += nanoseconds;
    ticks += static_cast<std::uint64_t>(nanoseconds * 5 / 2);
    clock += static_cast<double>(nanoseconds) * (1 + slew);
  }
  std::int64_t systemTime() const { return static_cast<std::int64_t>(clock); }
  // As a thread that asks when it has to.
  std::int64_t now(std::uint64_t perTick) {
    VRKTime::Moment moment;
    if (window.tell(ticks, perTick, moment)) return inNanoseconds(moment);
    window.begin({ticks, asMoment(systemTime()), true});
    return systemTime();
  }

  std::uint64_t ticks = 1000;
  std::int64_t even = SECOND;
  double clock = 1e15, slew = 0;  // as much as is exact to a nanosecond
  VRKTickRate rate;
  VRKTickWindow window;
};

}  // namespace

// For long enough that the processor's counter is used, and across the end of a second.
TEST(VRKTimeTest, IsBehindTheSystemsClockByMicrosecondsAndNeverAhead) {
  onThreads(3, [](int) {
    const std::int64_t end = systemTime() + SECOND + SECOND / 5;
    for (std::int64_t last = 0, after = 0; after < end;) {
      const std::int64_t before = systemTime();
      const std::int64_t now = inNanoseconds(VRKTime::now());
      after = systemTime();
      ASSERT_GE(now, std::max(last, before - MOST_BEHIND)) << last;
      ASSERT_LE(now, after);
      last = now;
    }
  });
}

TEST(VRKTimeTest, RunsNeitherBackwardsNorAheadWhileTheClockIsSlewed) {
  constexpr double FASTEST = 0.083333;
  for (const auto& [atStart, later] : {std::pair{0., -FASTEST}, {0., FASTEST}, {FASTEST, -FASTEST}, {0., -0.1005}}) {
    Machine machine;
    machine.slew = atStart;
    const std::uint64_t perTick = machine.calibrate();
    ASSERT_NE(perTick, 0u);
    machine.slew = later;
    std::int64_t last = 0;
    for (int i = 0; i < 100000; ++i) {
      const std::int64_t now = machine.now(perTick);
      ASSERT_GE(now, std::max(last, machine.systemTime() - MOST_BEHIND)) << later;
      ASSERT_LE(now, machine.systemTime()) << later;
      last = now;
      machine.pass(1 + i % 97);
    }
  }
}

TEST(VRKTimeTest, FollowsAClockThatIsSet) {
  Machine machine;
  for (const double step : {-3600e9, 3600e9}) {
    machine.now(std::uint64_t{1} << 30);
    machine.clock += step;
    machine.pass(2 * VRKTickWindow::LONGEST_USE);  // the rate is too low by that
    EXPECT_EQ(machine.now(std::uint64_t{1} << 30), machine.systemTime());
  }
}

TEST(VRKTimeTest, NoRateComesOfACalibrationThatWasDisturbed) {
  const std::pair<const char*, void (*)(Machine&)> CASES[] = {
      {"counter began anew", [](Machine& m) { m.ticks = 17; }},
      {"counter lost some", [](Machine& m) { m.ticks -= 20000000; }},
      {"counter went on while the machine slept", [](Machine& m) { m.ticks += 5000000; }},
      {"held up",
       [](Machine& m) {
         m.rate.compare({m.ticks, asMoment(m.even - 5000000), false});
       }},
  };
  for (const auto& [what, disturb] : CASES) {
    for (int at = 0; at < 3; ++at) {
      const double nanoseconds = std::ldexp(static_cast<double>(Machine().calibrate(disturb, at)), -32);
      EXPECT_TRUE(nanoseconds > 0.35 && nanoseconds < 0.4) << what << " " << at << ": " << nanoseconds;
    }
  }
}
