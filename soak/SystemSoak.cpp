// What a program meets of its system, for longer than a test has: a disk that is full again and again, and the clock.

#include <sched.h>
#include <sys/mount.h>

#include <ctime>
#include <set>

#include "log4vrk/platform/internal/VRKTime.h"
#include "soak/Soak.h"

using namespace vrktest;

namespace {

constexpr std::int64_t SECOND = 1000000000;

// A file system of 64 KiB that this process alone sees, on a directory. Only while there is one thread.
class SmallDisk {
 public:
  explicit SmallDisk(const TempDir& dir) : m_path(dir.file("disk")) {
    std::filesystem::create_directory(m_path);
    m_mounted = (::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
                ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                ::mount("log4vrk", m_path.c_str(), "tmpfs", 0, "size=64k") == 0;
  }
  ~SmallDisk() {
    if (m_mounted) ::umount2(m_path.c_str(), MNT_DETACH);
  }
  bool isMounted() const { return m_mounted; }

 private:
  const std::string m_path;
  bool m_mounted;
};

std::int64_t inNanoseconds(const VRKTime::Moment& moment) { return moment.seconds * SECOND + moment.nanoseconds; }

std::int64_t systemTime() {
  timespec time;
  clock_gettime(CLOCK_REALTIME, &time);
  return time.tv_sec * SECOND + time.tv_nsec;
}

}  // namespace

// What fits is there, whole and in order; each event that did not has its line in the internal log; the first event
// after the disk was emptied is written.
TEST(Soak, disk) {
  constexpr long FOR_EACH_ROUND = 6000;
  const TempDir dir;
  const SmallDisk disk(dir);
  if (!disk.isMounted()) {
    std::printf("disk: skipped: this needs root, or user namespaces\n");
    return;
  }
  const InternalLog internal;
  const long rounds = scaled(200);
  const std::string path = dir.file("disk/log");
  long logged = 0, written = 0;
  for (const Way way : WAYS) {
    LOGPatternLayout pattern("%m%n");
    LOGLayout simple;
    LOGFileAppender file(way == Way::FAST ? &pattern : &simple, path.c_str());
    Tree tree;
    LOGLogger* const logger = tree.getLogger("disk");
    logger->addAppender(&file);
    for (long round = 0; round < rounds && !HasFailure(); ++round) {
      const long first = logged + 1;
      for (long n = 0; n < FOR_EACH_ROUND; ++n) logNumber(logger, way, 0, ++logged);
      long last = first - 1;
      bool isFirst = true;
      for (const std::string& line : linesOf(path)) {
        std::string end;
        long number = 0;
        int writer = -1;
        std::istringstream(line) >> writer >> number >> end;
        if (end != "end") continue;  // cut where the disk was full
        EXPECT_TRUE(isFirst ? number == first : number > last) << line;
        isFirst = false;
        last = number;
        ++written;
      }
      EXPECT_FALSE(isFirst);
      EXPECT_EQ(0, ::truncate(path.c_str(), 0));
    }
    logger->removeAllAppenders();
  }
  const long lost = internal.count("LOGQuietWriter::write -- VRKThrowable exception occurred");
  EXPECT_EQ(logged - written, lost);
  EXPECT_GT(lost, 2 * rounds);
  report(text("a disk full and emptied ", 2 * rounds, " times, ", logged, " events logged, ", written, " written, ",
              lost, " lost with a line each"));
}

// The same disk, with another file to fall back on: every event is in one of them. One that was torn just before its
// line feed looks whole, and is in the other as well.
TEST(Soak, fallback) {
  constexpr int WRITERS = 4;
  constexpr long FOR_EACH_ROUND = 2000;
  const TempDir dir;
  const SmallDisk disk(dir);
  if (!disk.isMounted()) {
    std::printf("fallback: skipped: this needs root, or user namespaces\n");
    return;
  }
  const long rounds = scaled(200);
  const std::string path = dir.file("disk/log"), other = dir.file("other");
  long logged = 0, there = 0, torn = 0, twice = 0;
  for (const Way way : WAYS) {
    LOGPatternLayout pattern("%m%n");
    LOGLayout simple;
    LOGFileAppender first(way == Way::FAST ? &pattern : &simple, path.c_str()),
        second(way == Way::FAST ? &pattern : &simple, other.c_str());
    first.setName("first");
    LOGFallbackAppender safe;
    safe.setRetryDelay(1);
    safe.addAppender(&first);
    safe.addAppender(&second);
    Tree tree;
    LOGLogger* const logger = tree.getLogger("fallback");
    logger->addAppender(&safe);
    for (long round = 0; round < rounds && !HasFailure(); ++round) {
      onThreads(WRITERS, [&](int writer) {
        for (long n = 1; n <= FOR_EACH_ROUND; ++n) logNumber(logger, way, writer, n);
      });
      std::vector<std::string> lines = linesOf(path);
      const long onDisk = static_cast<long>(lines.size());
      for (const std::string& line : linesOf(other)) lines.push_back(line);
      std::set<std::string> seen;
      for (const std::string& line : lines) {
        if (line.size() < 3 || line.compare(line.size() - 3, 3, "end") != 0) {
          ++torn;
        } else if (!seen.insert(line).second) {
          ++twice;
        }
      }
      EXPECT_EQ(static_cast<std::size_t>(WRITERS * FOR_EACH_ROUND), seen.size());
      EXPECT_LT(onDisk, WRITERS * FOR_EACH_ROUND);
      logged += WRITERS * FOR_EACH_ROUND;
      there += static_cast<long>(seen.size());
      EXPECT_EQ(0, ::truncate(path.c_str(), 0));
      EXPECT_EQ(0, ::truncate(other.c_str(), 0));
    }
    logger->removeAppender(&safe);
  }
  EXPECT_LE(twice, torn + 2 * rounds);
  report(text("a disk full and emptied ", 2 * rounds, " times, ", logged, " events logged by 4 threads, ",
              logged - there, " lost, ", torn, " torn on the full disk and whole in the other file, ", twice,
              " twice"));
}

// Threads that read without a pause, with naps between: the system moves them to other processors and sleeps.
TEST(Soak, clock) {
  constexpr std::int64_t MOST_BEHIND = 100000;
  constexpr int AT_ONCE = 10000;
  const std::int64_t end = systemTime() + scaled(180000) * SECOND / 1000;
  std::atomic<long> readings{0};
  std::atomic<std::int64_t> furthest{0};
  onThreads(3, [&](int) {
    std::int64_t behind = 0;
    for (std::int64_t last = 0, after = 0; after < end; std::this_thread::sleep_for(std::chrono::microseconds(500))) {
      for (int i = 0; i < AT_ONCE; ++i) {
        const std::int64_t before = systemTime();
        const std::int64_t now = inNanoseconds(VRKTime::now());
        after = systemTime();
        ASSERT_GE(now, std::max(last, before - MOST_BEHIND)) << last;
        ASSERT_LE(now, after);
        behind = std::max(behind, before - now);
        last = now;
      }
      readings += AT_ONCE;
    }
    std::int64_t seen = furthest;
    while (behind > seen && !furthest.compare_exchange_weak(seen, behind)) continue;
  });
  report(text(readings.load(), " readings by 3 threads, none ahead or backwards, ", furthest / 1000,
              " microseconds behind at most"));
}
