#include <ctime>

#include "log4vrk/platform/VRKTime.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

constexpr long SECOND = 1000000000;
constexpr long MOST_BEHIND = 100000;

long inNanoseconds(const VRKTime::Moment& moment) { return moment.seconds % 1000000 * SECOND + moment.nanoseconds; }

long systemTime() {
  timespec time;
  clock_gettime(CLOCK_REALTIME, &time);
  return inNanoseconds({time.tv_sec, static_cast<std::int32_t>(time.tv_nsec)});
}

}  // namespace

// For long enough that the processor's counter is used, and across the end of a second.
TEST(VRKTimeTest, IsBehindTheSystemsClockByMicrosecondsAndNeverAhead) {
  onThreads(3, [](int) {
    const long end = systemTime() + SECOND + SECOND / 5;
    for (long last = 0, after = 0; after < end;) {
      const long before = systemTime();
      const long now = inNanoseconds(VRKTime::now());
      after = systemTime();
      ASSERT_GE(now, std::max(last, before - MOST_BEHIND)) << last;
      ASSERT_LE(now, after);
      last = now;
    }
  });
}
