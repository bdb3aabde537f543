// A program with a durable queue that is killed again and again: while it logs, at each step of a delivery, and while
// it recovers what the one before it has left. kill-durable-control leaves out what makes lines come once.

#include <climits>

#include "log4vrk/platform/internal/VRKFault.h"
#include "soak/Soak.h"

using namespace vrktest;

namespace {

constexpr int THREADS = 4, KILLS_IN_A_ROW = 50;
constexpr std::size_t LONGEST_FILLER = 400;

// What the log calls of one program have returned for.
struct Returned {
  std::atomic<long> last[THREADS];
};

std::size_t fillerOf(long number) { return static_cast<std::size_t>(number) * 7919 % LONGEST_FILLER + 1; }

// "<writer> <number> <filler> end", a filler of another length each time: records of one to four slots.
void logFilled(LOGLogger* logger, int writer, long number) {
  static const std::string filler(LONGEST_FILLER, 'x');
  const std::size_t length = number % 8 == 0 ? fillerOf(number) : 1;
  LOG4VRK_ERROR(logger, writer << " " << number << " " << std::string_view(filler).substr(0, length) << " end");
}

// What is wrong with the lines. A writer is a thread of one of the programs.
struct Tally {
  long lines = 0, torn = 0, twice = 0, disordered = 0, lost = 0;

  void add(const std::string& line, std::map<int, long>& last) {
    ++lines;
    int writer = -1, end = 0;
    long number = -1;
    const int fields = std::sscanf(line.c_str(), "%d %ld %*[x]%n", &writer, &number, &end);
    const std::size_t filler = number % 8 == 0 ? fillerOf(number) : 1;
    const std::string whole =
        std::to_string(writer) + " " + std::to_string(number) + " " + std::string(filler, 'x') + " end";
    if (fields < 2 || line != whole) {
      ++torn;
    } else if (number <= last[writer]) {
      ++twice;
    } else {
      if (number != last[writer] + 1) ++disordered;
      last[writer] = number;
    }
  }
};

class Killing {
 public:
  Killing(bool onDisk, bool control)
      : m_ring(onDisk ? m_dir.file("rings") : "/dev/shm/" + std::to_string(::getpid()) + ".soak"),
        m_isControl(control) {}
  ~Killing() { std::filesystem::remove_all(m_ring); }
  Killing(const Killing&) = delete;
  Killing& operator=(const Killing&) = delete;

  /// Kills one program after the other, lets the last recover and end, and looks at the files.
  void run(long kills, Tally& tally) {
    std::map<int, long> atLeast;
    for (int program = 0; program < kills && !testing::Test::HasFailure(); ++program) killOne(program, atLeast);
    EXPECT_EQ(0, statusInChild([&] { log(0, 0, 0); }, 60));
    EXPECT_TRUE(std::filesystem::is_empty(m_ring));
    std::map<int, long> last;
    for (const std::string& file : filesOldestFirst()) {
      for (const std::string& line : linesOf(file)) tally.add(line, last);
    }
    // A log call that had not returned may have left its event, too.
    for (const auto& [writer, number] : atLeast) {
      tally.lost += std::max(0L, number - last[writer]);
      EXPECT_LE(last[writer], number + 1);
    }
  }

 private:
  // Who is killed in the middle of a roll-over leaves a gap in the numbers.
  std::vector<std::string> filesOldestFirst() const {
    std::map<int, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(m_dir.path())) {
      const std::string name = entry.path().filename();
      if (name.compare(0, 4, "log.") == 0) files[-std::stoi(name.substr(4))] = entry.path();
      if (name == "log") files[0] = entry.path();
    }
    std::vector<std::string> paths;
    for (const auto& [index, path] : files) paths.push_back(path);
    return paths;
  }

  // Ends when it is killed, or at once without threads.
  void log(int program, int threads, unsigned random) {
    LOGPatternLayout layout("%m%n");
    LOGRollingFileAppender file;
    file.setLayout(&layout);
    file.setMaximumFileSize(100000 + static_cast<long>(random % 100000));
    file.setMaxBackupIndex(100000);
    file.setFile(m_dir.file("log").c_str(), 1, 0, 0);
    LOGDurableAsyncAppender queue;
    queue.setName("soak");
    queue.setDirectory(m_ring.c_str());
    queue.setBufferSize(1024);
    queue.addAppender(&file);
    Tree tree;
    LOGLogger* const logger = tree.getLogger("soak");
    logger->addAppender(&queue);
    if (m_isControl) VRKFault::arm(VRKFault::QUEUE_LINES, INT_MAX);
    if (threads > 0) {
      onThreads(threads, [&](int t) {
        for (long n = 1;; ++n) {
          logFilled(logger, program * THREADS + t, n);
          m_returned.last[t].store(n, std::memory_order_relaxed);
        }
      });
    }
    queue.activateOptions();
    queue.close();
    logger->removeAllAppenders();
  }

  // Half of them are killed at any moment of some milliseconds, a quarter while they recover, and a quarter at a step.
  void killOne(int program, std::map<int, long>& atLeast) {
    static constexpr VRKFault::Point STEPS[] = {VRKFault::QUEUE_ANNOUNCED, VRKFault::QUEUE_WRITTEN,
                                                VRKFault::QUEUE_SETTLED, VRKFault::QUEUE_RECOVERED};
    for (std::atomic<long>& each : m_returned.last) each = 0;
    const unsigned random = m_random();
    const unsigned kind = program % 4;
    const pid_t child = startChild([&] {
      if (kind == 0) VRKFault::arm(STEPS[random % 4], 1, static_cast<int>(random / 4 % 40));
      if (kind == 1) VRKFault::arm(VRKFault::QUEUE_RECOVERED);
      log(program, THREADS, random);
    });
    std::this_thread::sleep_for(std::chrono::microseconds(random % (kind == 1 ? 1500 : 12000)));
    ::kill(child, SIGKILL);
    ASSERT_EQ(-SIGKILL, statusOf(child)) << "the program ended by itself";
    for (int t = 0; t < THREADS; ++t) atLeast[program * THREADS + t] = m_returned.last[t];
  }

  const TempDir m_dir;
  const std::string m_ring;
  const bool m_isControl;
  Returned& m_returned = sharedWithChildren<Returned>();
  std::mt19937 m_random{20261122};
};

class KillDurable : public testing::Test {
 public:
  explicit KillDurable(bool control) : m_isControl(control) {}

  void TestBody() override {
    const long kills = scaled(m_isControl ? 1000 : 10000);
    Tally tally;
    for (long done = 0; done < kills && !HasFailure(); done += KILLS_IN_A_ROW) {
      Killing(done / KILLS_IN_A_ROW % 2 == 1, m_isControl).run(std::min<long>(KILLS_IN_A_ROW, kills - done), tally);
    }
    EXPECT_EQ(0, tally.lost);
    if (m_isControl) {
      EXPECT_GT(tally.twice, 0) << "this soak does not see what it looks for";
    } else {
      EXPECT_EQ(0, tally.disordered);
      EXPECT_EQ(0, tally.torn);
      EXPECT_EQ(0, tally.twice);
    }
    report(text(kills, " programs killed, ", tally.lines, " lines, of which ", tally.lost, " lost, ", tally.twice,
                " twice, ", tally.torn, " torn, ", tally.disordered, " out of order"));
  }

 private:
  const bool m_isControl;
};

testing::TestInfo* add(const char* name, bool control) {
  return testing::RegisterTest("Soak", name, nullptr, nullptr, __FILE__, __LINE__,
                               [control]() -> testing::Test* { return new KillDurable(control); });
}

[[maybe_unused]] testing::TestInfo* const g_soak = add("kill-durable", false);
[[maybe_unused]] testing::TestInfo* const g_control = add("kill-durable-control", true);

}  // namespace
