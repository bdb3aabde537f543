// Programs that are killed, that fork, that are configured anew, and that log for long: the tests of tests/e2e, for
// longer.

#include <malloc.h>

#include "soak/Soak.h"

using namespace vrktest;

namespace {

// Counts the events that reach an appender.
struct CountingFilter : LOGFilter {
  int decide(LOGLoggingEvent*) override {
    ++count;
    return m_NEUTRAL;
  }
  std::atomic<long> count{0};
};

// The numbers that the writers have reached. The first lines may be gone, the others are whole, and in order.
std::map<int, long> lastNumbersOfTail(const std::vector<std::string>& lines) {
  std::map<int, long> last;
  for (const std::string& line : lines) {
    int writer = -1;
    long number = -1;
    std::istringstream(line) >> writer >> number;
    last.emplace(writer, number - 1);
  }
  lastNumbers(lines, last);
  return last;
}

// Reads the document again and again while threads log, two directly and two through a queue.
long rereadWhileThreadsLog(Way way, long rereads, std::string& memory) {
  constexpr int THREADS = 4, FOR_EACH_READING = 5;
  constexpr long TOLERANCE = 256;  // KiB: events on their way, which are more or fewer
  const auto allocated = [] { return static_cast<long>(::mallinfo2().uordblks / 1024); };
  const TempDir dir;
  const std::string document = loadDocument(dir, way, {{"direct", "file"}, {"load", "async"}});
  EXPECT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
  std::atomic<long> read{0};
  std::atomic<bool> done{false};
  long counts[THREADS] = {};
  std::thread logging([&] {
    onThreads(THREADS, [&](int t) {
      LOGLogger* const logger = LOGManager::getLogger(t % 2 == 0 ? "load.inner.most" : "direct.a");
      while (!done) {
        if (counts[t] < FOR_EACH_READING * (read + 1)) {
          logNumber(logger, way, t, ++counts[t]);
        } else {
          std::this_thread::yield();
        }
      }
    });
  });
  long descriptors = 0, bytes = 0;
  for (; read < rereads; ++read) {
    EXPECT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
    if (read == rereads / 10) {
      descriptors = openDescriptors();
      bytes = allocated();
    }
  }
  EXPECT_EQ(descriptors, openDescriptors());
  EXPECT_LE(allocated(), bytes + TOLERANCE);
  memory += text(memory.empty() ? "" : ", ", bytes, " and ", allocated(), " KiB");
  done = true;
  logging.join();
  LOG4VRKConfigurator::shutdown();
  std::map<int, long> last;
  lastNumbers(linesWithBackups(dir.file("all.log")), last);
  long logged = 0;
  for (int t = 0; t < THREADS; ++t) {
    EXPECT_EQ(counts[t], last[t]) << "thread " << t;
    logged += counts[t];
  }
  return logged;
}

}  // namespace

TEST(Soak, kills) {
  const long each = scaled(5000);
  long found = 0;
  for (const Way way : WAYS) found += killWhileLogging(way, static_cast<int>(each));
  report(text(2 * each, " programs killed, ", found, " log calls had returned, all of them in the files"));
}

TEST(Soak, forks) {
  const long each = scaled(5000);
  long logged = 0;
  for (const Way way : WAYS) logged += forkWhileThreadsLog(way, static_cast<int>(each));
  report(text(2 * each, " children forked while 4 threads logged ", logged, " events, nothing lost or twice"));
}

TEST(Soak, rereads) {
  const long each = scaled(50000);
  long logged = 0;
  std::string memory;
  for (const Way way : WAYS) logged += rereadWhileThreadsLog(way, each, memory);
  report(text(2 * each, " readings while 4 threads logged ", logged,
              " events, nothing lost or twice; memory after a tenth and at the end: ", memory));
}

TEST(Soak, volume) {
  constexpr int WRITERS = 4;
  constexpr long CHUNK = 25000;     // of each writer, so that the last files hold the ends of them all
  constexpr long TOLERANCE = 4096;  // KiB
  const TempDir dir;
  LOGPatternLayout layout("%m%n");
  CountingFilter counting;
  LOGRollingFileAppender file;
  file.setLayout(&layout);
  file.addFilter(&counting);
  file.setMaximumFileSize(4000000);
  file.setMaxBackupIndex(2);
  file.setFile(dir.file("log").c_str(), 0, 0, 0);
  LOGAsyncAppender queue;
  queue.addAppender(&file);
  Tree tree;
  LOGLogger* const logger = tree.getLogger("volume");
  logger->addAppender(&queue);
  const long chunks = scaled(1e8 / (WRITERS * CHUNK));
  long memory = 0;
  for (long chunk = 0; chunk < chunks; ++chunk) {
    onThreads(WRITERS, [&](int t) {
      for (long n = chunk * CHUNK + 1; n <= (chunk + 1) * CHUNK; ++n) logNumber(logger, Way::FAST, t, n);
    });
    if (chunk == chunks / 10) memory = residentMemory();
  }
  EXPECT_LE(residentMemory(), memory + TOLERANCE);
  const long atEnd = residentMemory();
  queue.close();
  file.close();
  EXPECT_EQ(WRITERS * CHUNK * chunks, counting.count);
  const std::map<int, long> last = lastNumbersOfTail(linesWithBackups(dir.file("log")));
  EXPECT_EQ(static_cast<std::size_t>(WRITERS), last.size());
  for (const auto& [writer, number] : last) EXPECT_EQ(CHUNK * chunks, number) << "writer " << writer;
  EXPECT_FALSE(std::ifstream(dir.file("log.3")));
  logger->removeAllAppenders();
  report(text(counting.count.load(),
              " events through a queue into rolling files; memory after a tenth and at the end: ", memory, " and ",
              atEnd, " KiB"));
}
