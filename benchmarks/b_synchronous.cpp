// b. Synchronous: the event is in the kernel when the call returns. On one thread, and on four that share a logger
// (b4).

#include <mutex>

#include "benchmarks/BoostLog.h"
#include "benchmarks/Floors.h"
#include "benchmarks/Harness.h"
#include "benchmarks/Ours.h"
#include "benchmarks/Peers.h"

namespace {

using bench::Comparison;

void oneThread(const bench::Settings& settings, bench::Folder& folder) {
  const long events = settings.count(200'000);
  const auto nanoseconds = [&](auto&& log) {
    return bench::seconds(1, events, [&](long i) { log.log(i); }) * 1e9 / static_cast<double>(events);
  };
  Comparison comparison(settings, {{"b", "ns/event"}});
  comparison.add("write", [&] {
    bench::UnbufferedFile file(folder.newFile());
    return bench::seconds(1, events, [&](long) { file.write(bench::LINE); }) * 1e9 / static_cast<double>(events);
  });
#ifdef LOG4VRK_PEER_SPDLOG
  comparison.add("spdlog", [&] { return nanoseconds(bench::SpdlogLog(folder.newFile(), true)); });
#endif
#ifdef LOG4VRK_PEER_GLOG
  comparison.add("glog", [&] { return nanoseconds(bench::GlogLog(folder.newFile())); });
#endif
#ifdef LOG4VRK_PEER_BOOST
  comparison.add("Boost.Log", [&] { return nanoseconds(bench::BoostLog(folder.newFile())); });
#endif
  comparison.add("ours", [&] {
    const double result = nanoseconds(bench::OurLog(folder.newFile()));
    folder.expectLines(events);
    return result;
  });
  comparison.gate("b", "ours", "write", Comparison::AT_MOST, 1.45, 1.15);
  comparison.gate("b", "ours", "spdlog", Comparison::AT_MOST, 0.65);
  comparison.run();
}

void fourThreads(const bench::Settings& settings, bench::Folder& folder) {
  const long events = settings.count(50'000);
  const auto perSecond = [&](auto&& log) {
    return static_cast<double>(4 * events) / bench::seconds(4, events, [&](long i) { log.log(i); });
  };
  Comparison comparison(settings, {{"b4", "events/s"}});
  comparison.add("mutex", [&] {
    bench::UnbufferedFile file(folder.newFile());
    std::mutex mutex;
    return static_cast<double>(4 * events) / bench::seconds(4, events, [&](long) {
             const std::lock_guard<std::mutex> lock(mutex);
             file.write(bench::LINE);
           });
  });
#ifdef LOG4VRK_PEER_SPDLOG
  comparison.add("spdlog", [&] { return perSecond(bench::SpdlogLog(folder.newFile(), true)); });
#endif
#ifdef LOG4VRK_PEER_GLOG
  comparison.add("glog", [&] { return perSecond(bench::GlogLog(folder.newFile())); });
#endif
  comparison.add("ours", [&] {
    const double result = perSecond(bench::OurLog(folder.newFile()));
    folder.expectLines(4 * events);
    return result;
  });
  comparison.gate("b4", "ours", "mutex", Comparison::AT_LEAST, 0.90, 1.05);
  comparison.gate("b4", "ours", "spdlog", Comparison::AT_LEAST, 1.5);
  comparison.run();
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  bench::Folder folder;
  oneThread(settings, folder);
  fourThreads(settings, folder);
}
