#include "log4vrk/platform/internal/VRKTime.h"

#include <sys/stat.h>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#include <fcntl.h>
#include <unistd.h>
#include <x86intrin.h>

#include <atomic>
#include <cstring>
#endif

namespace {

VRKTime::Moment read(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return {time.tv_sec, static_cast<std::int32_t>(time.tv_nsec)};
}

}  // namespace

#if defined(__x86_64__) || defined(__i386__)

// The system's clock took a quarter of a log call into a buffer. So a thread asks for it some thousand times a second
// at most, and in between goes by the counter of the processor, which is what the system's clock is made from. The
// moments are microseconds behind that clock, never ahead of it, and as long as a clock that is set back or forward has
// not been asked, less than a millisecond late.
namespace {

constexpr std::int32_t SECOND = 1000000000;             // in nanoseconds
constexpr double CALIBRATION = 0.01 * SECOND;           // for how long the counter is compared with the clock, at least
constexpr double LEAST_RATE = 0.125, LARGEST_RATE = 2;  // what processors have, in nanoseconds for a tick
constexpr double CAUTION = 0.999;                       // the system may be slowing its clock down
constexpr int FRACTION = 32;                            // bits behind the point of the rate

constexpr std::uint64_t LONGEST_USE = 1 << 19;      // ticks after the clock was asked
constexpr std::uint64_t LONGEST_READING = 1 << 12;  // ticks while it was asked, unless the thread was interrupted

struct Reading {
  std::uint64_t ticks = 0;
  VRKTime::Moment moment{};

  /// False when it took too long for the two to belong together.
  bool take(clockid_t clock) {
    const std::uint64_t before = __rdtsc();
    moment = read(clock);
    ticks = __rdtsc();
    return ticks - before < LONGEST_READING;
  }
};

double nanosecondsBetween(const VRKTime::Moment& from, const VRKTime::Moment& to) {
  return static_cast<double>(to.seconds - from.seconds) * SECOND + (to.nanoseconds - from.nanoseconds);
}

// Whether the counter runs evenly in all states of the processor, and the system trusts it on all processors.
bool isTrusted() {
  constexpr unsigned POWER_MANAGEMENT = 0x80000007, INVARIANT = 1 << 8;
  unsigned a = 0, b = 0, c = 0, d = 0;
  if (__get_cpuid(POWER_MANAGEMENT, &a, &b, &c, &d) == 0 || (d & INVARIANT) == 0) return false;
  const int file = ::open("/sys/devices/system/clocksource/clocksource0/current_clocksource", O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  constexpr char TICKS[] = {'t', 's', 'c', '\n'};
  char name[sizeof TICKS];
  const bool same = ::read(file, name, sizeof name) == sizeof name && std::memcmp(name, TICKS, sizeof name) == 0;
  ::close(file);
  return same;
}

Reading g_first;
const bool g_trusted = g_first.take(CLOCK_MONOTONIC) && isTrusted();
std::atomic<std::uint64_t> g_rate{0};  // nanoseconds for a tick; 0 until that is known

__thread std::uint64_t t_ticks __attribute__((tls_model("initial-exec")));
__thread std::int64_t t_seconds __attribute__((tls_model("initial-exec")));
__thread std::int32_t t_nanoseconds __attribute__((tls_model("initial-exec")));

void calibrate() {
  Reading now;
  if (!g_trusted || !now.take(CLOCK_MONOTONIC)) return;
  const double elapsed = nanosecondsBetween(g_first.moment, now.moment);
  const double rate = elapsed / static_cast<double>(now.ticks - g_first.ticks);
  if (elapsed < CALIBRATION || rate < LEAST_RATE || rate > LARGEST_RATE) return;
  g_rate.store(static_cast<std::uint64_t>(CAUTION * rate * (std::uint64_t{1} << FRACTION)), std::memory_order_relaxed);
}

[[gnu::noinline]] VRKTime::Moment askSystem() {
  Reading reading;
  const bool whole = reading.take(CLOCK_REALTIME);
  t_ticks = whole ? reading.ticks : reading.ticks - LONGEST_USE;
  t_seconds = reading.moment.seconds;
  t_nanoseconds = reading.moment.nanoseconds;
  if (g_rate.load(std::memory_order_relaxed) == 0) calibrate();
  return reading.moment;
}

}  // namespace

VRKTime::Moment VRKTime::now() {
  const std::uint64_t rate = g_rate.load(std::memory_order_relaxed);
  const std::uint64_t ticks = rate != 0 ? __rdtsc() - t_ticks : LONGEST_USE;
  if (ticks >= LONGEST_USE) return askSystem();
  const std::int32_t nanoseconds = t_nanoseconds + static_cast<std::int32_t>(ticks * rate >> FRACTION);
  return nanoseconds < SECOND ? Moment{t_seconds, nanoseconds} : askSystem();
}

#else

VRKTime::Moment VRKTime::now() { return read(CLOCK_REALTIME); }

#endif

std::tm VRKTime::local(std::int64_t seconds) {
  const std::time_t time = static_cast<std::time_t>(seconds);
  std::tm result{};
  localtime_r(&time, &result);
  return result;
}

std::tm VRKTime::utc(std::int64_t seconds) {
  const std::time_t time = static_cast<std::time_t>(seconds);
  std::tm result{};
  gmtime_r(&time, &result);
  return result;
}

bool VRKTime::fileModified(const I18NString& path, std::int64_t& seconds) {
  struct stat status;
  if (::stat(path.toUtf8().c_str(), &status) != 0) return false;
  seconds = status.st_mtime;
  return true;
}
