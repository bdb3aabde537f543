// Files that are rolled over by time and by size and compressed: under load, and while programs are killed.

#include <algorithm>

#include "log4vrk/platform/internal/VRKFault.h"
#include "soak/Soak.h"
#include "tests/support/Compressed.h"

using namespace vrktest;

namespace {

constexpr long BEGIN = 1919332800, HOUR = 3600;  // 2030-10-27 12:00 UTC

// "[<writer> <number>]", whole: what a kill has cut short may stand in front of one.
void tally(const std::string& text, std::map<int, std::vector<char>>& counts) {
  for (std::size_t at = text.find('['); at != text.npos; at = text.find('[', at + 1)) {
    int writer = -1, end = 0;
    long number = -1;
    if (std::sscanf(text.c_str() + at, "[%d %ld%n", &writer, &number, &end) != 2 || number < 1) continue;
    if (text[at + static_cast<std::size_t>(end)] != ']') continue;
    std::vector<char>& seen = counts[writer];
    if (seen.size() <= static_cast<std::size_t>(number)) seen.resize(static_cast<std::size_t>(2 * number + 1000));
    char& count = seen[static_cast<std::size_t>(number)];
    if (count < 2) ++count;
  }
}

// Finished files, by what follows the name of the current one.
std::vector<std::string> finished(const TempDir& dir) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(dir.path())) {
    const std::string name = entry.path().filename();
    if (name.rfind("log.", 0) == 0 && name != "log.lock") names.push_back(name);
  }
  return names;
}

bool areCompressed(const TempDir& dir) {
  const std::vector<std::string> names = finished(dir);
  return std::all_of(names.begin(), names.end(), [](const std::string& name) {
    const std::string ending = std::filesystem::path(name).extension();
    return ending == ".gz" || ending == ".zst";
  });
}

void tallyAll(const TempDir& dir, std::map<int, std::vector<char>>& counts) {
  tally(dir.read("log"), counts);
  for (const std::string& name : finished(dir)) tally(contentOf(dir.file(name)), counts);
}

// A program's log, by hours of UTC.
struct Log {
  Log(const TempDir& dir, const char* size, const char* format) {
    file.setLayout(&layout);
    file.setInterval("hour");
    file.setTimeZone("UTC");
    file.setMaximumFileSize(size);
    file.setCompress(format);
    file.setFile(dir.file("log").c_str());
    file.activateOptions();
    logger->addAppender(&file);
  }
  ~Log() {
    file.close();
    logger->removeAllAppenders();
  }
  // With an hour, or by the fast path.
  void write(int writer, long number, long hour) {
    if (hour < 0) {
      LOG4VRK_ERROR(logger, "[" << writer << " " << number << "]");
      return;
    }
    LOGObject message(I18NString("[") + writer + " " + number + "]");
    LOGLoggingEvent event("soak", logger, LOGLevel::ERROR_OBJ, &message);
    event.setTimeStamp(BEGIN + hour * HOUR, 0);
    file.activateOptions();
    file.doAppend(&event);
  }

  LOGPatternLayout layout{"%m%n"};
  LOGTimeRollingFileAppender file;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("soak");
};

class TimeRolling : public testing::Test {
  void TestBody() override {
    constexpr int THREADS = 16, HOURS = 500;
    const long each = scaled(8e6) / THREADS;
    const TempDir dir;
    {
      Log log(dir, std::to_string(std::max(2000L, each * THREADS / HOURS * 7)).c_str(), "zlib");
      onThreads(THREADS, [&](int t) {
        const bool isFast = t % 2 == 0;
        for (long n = 1; n <= each; ++n) log.write(t, n, isFast ? -1 : n * HOURS / each);
      });
      EXPECT_TRUE(eventually([&] { return areCompressed(dir); }, 120));
    }
    std::map<int, std::vector<char>> counts;
    tallyAll(dir, counts);
    long lost = 0, twice = 0;
    for (int t = 0; t < THREADS; ++t) {
      counts[t].resize(static_cast<std::size_t>(2 * each + 1001));
      for (long n = 1; n <= each; ++n) {
        const char count = counts[t][static_cast<std::size_t>(n)];
        lost += count == 0 ? 1 : 0;
        twice += count > 1 ? 1 : 0;
      }
    }
    const std::size_t rolls = finished(dir).size();
    EXPECT_EQ(0, lost);
    EXPECT_EQ(0, twice);
    EXPECT_GE(rolls, each * THREADS < 800000 ? 100u : 1000u);
    report(
        text(THREADS, " threads, ", each * THREADS, " events, ", rolls, " rolls, ", lost, " lost, ", twice, " twice"));
  }
};

// A third is killed at any moment, a third at a step of a roll or a compression, and a third while two programs share
// the file.
class KillTimeRolling : public testing::Test {
  static constexpr int THREADS = 3, KILLS_IN_A_ROW = 50;
  struct Returned {
    std::atomic<long> last[2 * THREADS];
    std::atomic<long> hour;
  };

  void TestBody() override {
    const long kills = scaled(1000);
    for (long done = 0; done < kills && !HasFailure(); done += KILLS_IN_A_ROW) {
      run(std::min<long>(KILLS_IN_A_ROW, kills - done), done / KILLS_IN_A_ROW % 2 == 0 ? "zlib" : "zstd");
    }
    EXPECT_EQ(0, m_lost);
    EXPECT_EQ(0, m_twice);
    report(text(kills, " kills, ", m_events, " events, ", m_files, " finished files, ", m_lost, " lost, ", m_twice,
                " twice"));
  }

  void run(long kills, const char* format) {
    const TempDir dir;
    std::map<int, long> atLeast;
    m_returned.hour = 0;
    for (int program = 0; program < kills && !HasFailure(); ++program) killOne(dir, format, program, atLeast);
    EXPECT_EQ(0, statusInChild(
                     [&] {
                       Log log(dir, "4kB", format);
                       log.write(-1, 1, m_returned.hour + 1);
                       EXPECT_TRUE(eventually([&] { return areCompressed(dir); }, 60));
                     },
                     100));
    std::map<int, std::vector<char>> counts;
    tallyAll(dir, counts);
    m_files += static_cast<long>(finished(dir).size());
    for (const auto& [writer, last] : atLeast) {
      std::vector<char>& seen = counts[writer];
      seen.resize(std::max(seen.size(), static_cast<std::size_t>(last + 2)));
      for (long n = 1; n <= last; ++n) m_lost += seen[static_cast<std::size_t>(n)] == 0 ? 1 : 0;
      m_twice += std::count(seen.begin(), seen.end(), 2);
      m_events += last;
    }
  }

  void killOne(const TempDir& dir, const char* format, int program, std::map<int, long>& atLeast) {
    static constexpr VRKFault::Point STEPS[] = {VRKFault::ROLL_RENAMED, VRKFault::ROLL_CREATED,
                                                VRKFault::COMPRESSION_WRITTEN, VRKFault::COMPRESSION_NAMED};
    const unsigned random = m_random();
    const int together = program % 3 == 2 ? 2 : 1;
    for (std::atomic<long>& each : m_returned.last) each = 0;
    std::vector<pid_t> children;
    for (int child = 0; child < together; ++child) {
      children.push_back(startChild([&, child] {
        if (program % 3 == 1) VRKFault::arm(STEPS[random % 4], 1, static_cast<int>(random / 4 % 4));
        Log log(dir, "4kB", format);
        onThreads(THREADS, [&](int t) {
          const int writer = child * THREADS + t;
          for (long n = 1;; ++n) {
            if (t == 0 && n % 500 == 0) ++m_returned.hour;
            log.write(program * 2 * THREADS + writer, n, t == 1 ? -1 : m_returned.hour.load());
            m_returned.last[writer].store(n, std::memory_order_relaxed);
          }
        });
      }));
    }
    std::this_thread::sleep_for(std::chrono::microseconds(2000 + random % 12000));
    for (const pid_t child : children) ::kill(child, SIGKILL);
    for (const pid_t child : children) EXPECT_EQ(-SIGKILL, statusOf(child)) << "the program ended by itself";
    for (int writer = 0; writer < together * THREADS; ++writer) {
      atLeast[program * 2 * THREADS + writer] = m_returned.last[writer];
    }
  }

  Returned& m_returned = sharedWithChildren<Returned>();
  std::mt19937 m_random{20261122};
  long m_lost = 0, m_twice = 0, m_events = 0, m_files = 0;
};

template <typename Soak>
testing::TestInfo* add(const char* name) {
  return testing::RegisterTest("Soak", name, nullptr, nullptr, __FILE__, __LINE__,
                               []() -> testing::Test* { return new Soak; });
}

[[maybe_unused]] testing::TestInfo* const g_load = add<TimeRolling>("time-rolling");
[[maybe_unused]] testing::TestInfo* const g_kills = add<KillTimeRolling>("kill-time-rolling");

}  // namespace
