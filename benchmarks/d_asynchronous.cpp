// d. Asynchronous, behind a queue of 8192 events: what a call costs at 100,000 calls a second (d), how many events come
// through until all is on disk (d1), and what bursts cost the processor (d2).

#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include "benchmarks/Harness.h"
#include "benchmarks/Ours.h"
#include "benchmarks/Peers.h"
#include "benchmarks/RingFloor.h"
#include "log4vrk/format.h"

namespace {

using bench::Comparison;

// Adds floor, peer and ours. `measure(log, call)` makes calls with call(i), from several threads when `threads` says
// so, and ends with log.close(), by when `events` are on disk.
template <typename Measure>
void addContenders(Comparison& comparison, bench::Folder& folder, int threads, long events, Measure measure) {
  comparison.add("spsc", [&folder, threads, events, measure] {
    bench::RingFloor log(folder.newFile(), threads, bench::QUEUE_SIZE);
    std::atomic<int> numbered{0};
    std::vector<double> result = measure(log, [&](long i) {
      thread_local int thread = -1;
      if (i == 0) thread = numbered++;
      log.log(i, thread);
    });
    folder.expectLines(events);
    return result;
  });
#ifdef LOG4VRK_PEER_SPDLOG
  comparison.add("spdlog", [&folder, measure] {
    bench::SpdlogAsyncLog log(folder.newFile(), bench::QUEUE_SIZE);
    return measure(log, [&](long i) { log.log(i); });
  });
#endif
  const std::pair<const char*, bench::OurAsyncLog::Kind> OURS[] = {{"ours", bench::OurAsyncLog::ORDINARY},
                                                                   {"ours (buffered)", bench::OurAsyncLog::BUFFERED},
                                                                   {"ours (durable)", bench::OurAsyncLog::DURABLE}};
  for (const auto& [name, kind] : OURS) {
    comparison.add(name, [&folder, kind = kind, events, measure] {
      bench::OurAsyncLog log(folder.newFile(), kind);
      std::vector<double> result = measure(log, [&](long i) { log.log(i); });
      folder.expectLines(events);
      return result;
    });
  }
  comparison.add("ours (format)", [&folder, events, measure] {
    bench::OurAsyncLog log(folder.newFile());
    std::vector<double> result = measure(
        log, [&](long i) { LOG4VRK_INFO_F(log.logger(), "request {} from {} ok", bench::number(i), bench::HOST); });
    folder.expectLines(events);
    return result;
  });
}

void latency(const bench::Settings& settings, bench::Folder& folder) {
  const long events = settings.count(100'000);
  Comparison comparison(settings,
                        {{"d p50", "ns/call"}, {"d p80", "ns/call"}, {"d p99", "ns/call"}, {"d p99.9", "ns/call"}});
  addContenders(comparison, folder, 1, events, [events](auto& log, auto call) {
    std::vector<double> result = bench::pacedCalls(events, 10'000, call);
    log.close();
    return result;
  });
  comparison.gate("d p50", "ours", "spsc", Comparison::AT_MOST, 1.6, 1.0);
  comparison.gate("d p80", "ours", "spsc", Comparison::AT_MOST, 1.8, 1.1);
  comparison.gate("d p99", "ours", "", Comparison::AT_MOST, 300, 150);
  comparison.gate("d p99.9", "ours", "spsc", Comparison::AT_MOST, 2.5, 1.5);
  comparison.gate("d p50", "ours", "spdlog", Comparison::AT_MOST, 0.2);
  comparison.gate("d p50", "ours (format)", "spsc", Comparison::AT_MOST, 1.0, 0.8);
  comparison.gate("d p80", "ours (format)", "spsc", Comparison::AT_MOST, 1.1, 0.75);
  for (const char* const item : {"d p50", "d p99"}) {
    comparison.gate(item, "ours (durable)", "ours", Comparison::AT_MOST, 1.1);
  }
  comparison.gate("d p99.9", "ours (durable)", "ours", Comparison::AT_MOST, 1.5);
  comparison.run();
}

void sustained(const bench::Settings& settings, bench::Folder& folder, int threads) {
  const long events = settings.count(400'000) / threads;
  const std::string item = threads == 1 ? "d1" : "d1x" + std::to_string(threads);
  Comparison comparison(settings, {{item, "events/s"}});
  addContenders(comparison, folder, threads, threads * events, [events, threads](auto& log, auto call) {
    return std::vector<double>{static_cast<double>(threads * events) /
                               bench::seconds(threads, events, call, [&] { log.close(); })};
  });
  comparison.gate(item, "ours", "spsc", Comparison::AT_LEAST, threads == 1 ? 0.33 : 0.38, 0.6);
  comparison.gate(item, "ours", "spdlog", Comparison::AT_LEAST, 2.5);
  comparison.gate(item, "ours (durable)", "ours", Comparison::AT_LEAST, 0.85);
  comparison.run();
}

double processorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// All threads of the process count, and the logging one sleeps between its bursts.
void bursts(const bench::Settings& settings, bench::Folder& folder) {
  const long count = settings.count(125);
  Comparison comparison(settings, {{"d2", "% of a core"}});
  addContenders(comparison, folder, 1, count * 1000, [count](auto& log, auto call) {
    const double processorBefore = processorSeconds();
    const auto begin = std::chrono::steady_clock::now();
    for (long burst = 0; burst < count; ++burst) {
      for (long i = 0; i < 1000; ++i) call(burst * 1000 + i);
      std::this_thread::sleep_until(begin + (burst + 1) * std::chrono::milliseconds(8));
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    const double processor = processorSeconds() - processorBefore;
    log.close();
    return std::vector<double>{100 * processor / elapsed.count()};
  });
  comparison.gate("d2", "ours", "", Comparison::AT_MOST, 25, 12);
  comparison.run();
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  bench::Folder folder;
  latency(settings, folder);
  sustained(settings, folder, 1);
  sustained(settings, folder, 4);
  bursts(settings, folder);
}
