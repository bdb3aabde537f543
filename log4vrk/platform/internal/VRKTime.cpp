#include "log4vrk/platform/internal/VRKTime.h"

#include <sys/stat.h>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#include <fcntl.h>
#include <unistd.h>
#include <x86intrin.h>

#include <atomic>
#include <cstring>

#include "log4vrk/platform/internal/VRKTickClock.h"
#endif

namespace {

VRKTime::Moment read(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return {time.tv_sec, static_cast<std::int32_t>(time.tv_nsec)};
}

}  // namespace

#if defined(__x86_64__) || defined(__i386__)

// The system's clock took a quarter of a log call into a buffer. So a thread asks for it some thousand times a
// second at most, and in between goes by the counter of the processor, which is what the system's clock is made from.
// It does so a tenth too slowly, because the system may slow its clock down by that much (as daemons that keep the time
// do) and the thread must not be ahead when it asks again: its moments never run backwards, unless the clock is set
// back.
namespace {

constexpr std::uint64_t LONGEST_READING = 1 << 12;  // ticks while a clock was asked, unless the thread was interrupted

VRKTickReading take(clockid_t clock) {
  VRKTickReading reading;
  const std::uint64_t before = __rdtsc();
  reading.moment = read(clock);
  reading.ticks = __rdtsc();
  reading.isWhole = reading.ticks - before < LONGEST_READING;
  return reading;
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

const bool g_trusted = isTrusted();
std::atomic<std::uint64_t> g_rate{0};  // as VRKTickRate gives it; 0 until it is known

__thread VRKTickWindow t_window __attribute__((tls_model("initial-exec")));

// By a clock that nobody slews: one that is being slowed down or sped up would make a rate that is wrong afterwards.
void calibrate() {
  static VRKTickRate rate;
  static std::atomic_flag busy = ATOMIC_FLAG_INIT;
  if (!g_trusted || busy.test_and_set(std::memory_order_acquire)) return;  // the others need not wait for one
  if (g_rate.load(std::memory_order_relaxed) == 0) {
    g_rate.store(rate.compare(take(CLOCK_MONOTONIC_RAW)), std::memory_order_relaxed);
  }
  busy.clear(std::memory_order_release);
}

[[maybe_unused]] const bool g_begun = (calibrate(), true);  // so that the first stretch of time begins at load

[[gnu::noinline]] VRKTime::Moment askSystem() {
  const VRKTickReading reading = take(CLOCK_REALTIME);
  t_window.begin(reading);
  if (g_rate.load(std::memory_order_relaxed) == 0) calibrate();
  return reading.moment;
}

}  // namespace

VRKTime::Moment VRKTime::now() {
  const std::uint64_t rate = g_rate.load(std::memory_order_relaxed);
  Moment moment;
  return rate != 0 && t_window.tell(__rdtsc(), rate, moment) ? moment : askSystem();
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
