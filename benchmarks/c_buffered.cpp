// c. Synchronous, with a buffer of 64 KiB before the file. On one thread, and on four that share a logger (c4).

#include <mutex>

#include "benchmarks/Floors.h"
#include "benchmarks/Harness.h"
#include "benchmarks/Ours.h"
#include "benchmarks/Peers.h"

namespace {

using bench::Comparison;

void oneThread(const bench::Settings& settings, bench::Folder& folder) {
  const long events = settings.count(400'000);
  const auto nanoseconds = [&](auto&& log) {
    return bench::seconds(1, events, [&](long i) { log.log(i); }) * 1e9 / static_cast<double>(events);
  };
  Comparison comparison(settings, {{"c", "ns/event"}});
  comparison.add("bufst", [&] {
    bench::BufferedFile file(folder.newFile());
    return bench::seconds(1, events, [&](long) { file.write(bench::LINE); }) * 1e9 / static_cast<double>(events);
  });
#ifdef LOG4VRK_PEER_SPDLOG
  comparison.add("spdlog", [&] { return nanoseconds(bench::SpdlogLog(folder.newFile(), false)); });
#endif
  comparison.add("ours", [&] {
    const double result = nanoseconds(bench::OurLog(folder.newFile(), 1));
    folder.expectLines(events);
    return result;
  });
  comparison.gate("c", "ours", "bufst", Comparison::AT_MOST, 5, 2.6);
  comparison.gate("c", "ours", "spdlog", Comparison::AT_MOST, 0.37);
  comparison.run();
}

void fourThreads(const bench::Settings& settings, bench::Folder& folder) {
  const long events = settings.count(100'000);
  const auto perSecond = [&](auto&& log) {
    return static_cast<double>(4 * events) / bench::seconds(4, events, [&](long i) { log.log(i); });
  };
  Comparison comparison(settings, {{"c4", "events/s"}});
  comparison.add("buf", [&] {
    bench::BufferedFile file(folder.newFile());
    std::mutex mutex;
    return static_cast<double>(4 * events) / bench::seconds(4, events, [&](long) {
             const std::lock_guard<std::mutex> lock(mutex);
             file.write(bench::LINE);
           });
  });
#ifdef LOG4VRK_PEER_SPDLOG
  comparison.add("spdlog", [&] { return perSecond(bench::SpdlogLog(folder.newFile(), false)); });
#endif
  comparison.add("ours", [&] {
    const double result = perSecond(bench::OurLog(folder.newFile(), 1));
    folder.expectLines(4 * events);
    return result;
  });
  comparison.gate("c4", "ours", "buf", Comparison::AT_LEAST, 0.38, 0.55);
  comparison.gate("c4", "ours", "spdlog", Comparison::AT_LEAST, 2.2);
  comparison.run();
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  bench::Folder folder;
  oneThread(settings, folder);
  fourThreads(settings, folder);
}
