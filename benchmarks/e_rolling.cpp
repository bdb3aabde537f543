// e. Rolling files of 10 MB with five backups, on one thread: flushed at each event, and with a buffer of 64 KiB. The
// floors do not roll, nor does the time-rolling file, unless it is midnight.

#include <mutex>

#include "benchmarks/Floors.h"
#include "benchmarks/Harness.h"
#include "benchmarks/Ours.h"
#include "benchmarks/Peers.h"

#ifdef LOG4VRK_PEER_SPDLOG
#include <spdlog/sinks/rotating_file_sink.h>
#endif

namespace {

using bench::Comparison;

constexpr long FILE_SIZE = 10L << 20;
constexpr long BACKUPS = 5;

LOGFileAppender* opened(LOGFileAppender* appender, const std::string& path, int bufferedIO) {
  appender->setLayout(bench::OurLog::layout());
  appender->setFile(path.c_str());
  if (bufferedIO == 1) {
    appender->setBufferedIO(1);
    appender->setBufferSize(bench::BUFFER_SIZE);
  }
  appender->activateOptions();
  return appender;
}

LOGFileAppender* rollingFile() {
  auto* const appender = new LOGRollingFileAppender;
  appender->setMaximumFileSize(FILE_SIZE);
  appender->setMaxBackupIndex(BACKUPS);
  return appender;
}

template <typename Floor>
void compare(const bench::Settings& settings, bench::Folder& folder, const char* item, const char* floor,
             int bufferedIO) {
  const long events = settings.count(350'000);
  const auto nanoseconds = [&](auto call) {
    return bench::seconds(1, events, call) * 1e9 / static_cast<double>(events);
  };
  Comparison comparison(settings, {{item, "ns/event"}});
  comparison.add(floor, [&] {
    Floor file(folder.newFile());
    std::mutex mutex;
    return nanoseconds([&](long) {
      const std::lock_guard<std::mutex> lock(mutex);
      file.write(bench::LINE);
    });
  });
#ifdef LOG4VRK_PEER_SPDLOG
  comparison.add("spdlog", [&] {
    bench::SpdlogLog log(std::make_shared<spdlog::sinks::rotating_file_sink_mt>(folder.newFile(), FILE_SIZE, BACKUPS),
                         bufferedIO == 0);
    return nanoseconds([&](long i) { log.log(i); });
  });
#endif
  comparison.add("ours", [&] {
    const bench::OurLog log(opened(rollingFile(), folder.newFile(), bufferedIO));
    return nanoseconds([&](long i) { log.log(i); });
  });
  comparison.add("ours (by the day)", [&] {
    const bench::OurLog log(opened(new LOGTimeRollingFileAppender, folder.newFile(), bufferedIO));
    return nanoseconds([&](long i) { log.log(i); });
  });
  comparison.gate(item, "ours", floor, Comparison::AT_MOST, bufferedIO == 1 ? 3.9 : 1.35, bufferedIO == 1 ? 1.8 : 1.15);
  comparison.gate(item, "ours", "spdlog", Comparison::AT_MOST, bufferedIO == 1 ? 0.40 : 0.65);
  comparison.run();
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  bench::Folder folder;
  compare<bench::UnbufferedFile>(settings, folder, "e flushed", "mutex", 0);
  compare<bench::BufferedFile>(settings, folder, "e buffer", "buf", 1);
}
