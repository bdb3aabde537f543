#include <ctime>

#include "log4vrk/platform/internal/VRKTime.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

constexpr std::int64_t SECOND = 1000000000;
constexpr std::int64_t MOST_BEHIND = 100000;

std::int64_t inNanoseconds(const VRKTime::Moment& moment) { return moment.seconds * SECOND + moment.nanoseconds; }

std::int64_t systemTime() {
  timespec time;
  clock_gettime(CLOCK_REALTIME, &time);
  return inNanoseconds({time.tv_sec, static_cast<std::int32_t>(time.tv_nsec)});
}

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
