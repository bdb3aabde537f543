// a. What a call costs that the level disables.

#include "benchmarks/Checks.h"
#include "benchmarks/Harness.h"
#include "benchmarks/Line.h"
#include "benchmarks/Peers.h"
#include "log4vrk/log4vrk.h"

#ifdef LOG4VRK_PEER_SPDLOG
#include <spdlog/sinks/null_sink.h>
#endif

// As in a function of a program, whose call is not to be measured.
#define BENCH_INLINE __attribute__((always_inline))

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  const long calls = settings.count(30'000'000);
  const auto nanoseconds = [calls](auto call) {
    const double seconds = bench::seconds(1, calls, [&](long i) BENCH_INLINE {
      bench::fence();
      call(i);
    });
    return seconds * 1e9 / static_cast<double>(calls);
  };

  LOGManager::getRootLogger()->setLevel(LOGLevel::INFO_OBJ);
  LOGManager::getLogger("com.acme");
  LOGLogger* const logger = LOGManager::getLogger(bench::LOGGER);
  LOGObject message(I18NString("request 123456 from host-042.example.org ok"));

  bench::Comparison comparison(settings, {{"a", "ns/call"}});
  comparison.add("null", [&] {
    return nanoseconds([](long i) BENCH_INLINE {
      if (bench::level.load(std::memory_order_relaxed) <= 10000) bench::evaluate(bench::number(i));
    });
  });
  comparison.add("call", [&] { return nanoseconds([](long i) { bench::checkLevel(10000, bench::number(i)); }); });
#ifdef LOG4VRK_PEER_SPDLOG
  bench::SpdlogLog spdlogLog(std::make_shared<spdlog::sinks::null_sink_mt>(), false);
  comparison.add("spdlog", [&] {
    return nanoseconds(
        [&](long i) BENCH_INLINE { spdlogLog.logger().debug("request {} from {} ok", bench::number(i), bench::HOST); });
  });
#endif
#ifdef LOG4VRK_PEER_GLOG
  comparison.add("glog", [&] {
    return nanoseconds(
        [](long i) BENCH_INLINE { VLOG(1) << "request " << bench::number(i) << " from " << bench::HOST << " ok"; });
  });
#endif
  comparison.add("ours (macro)", [&] {
    return nanoseconds([&](long i) BENCH_INLINE {
      LOG4VRK_DEBUG(logger, "request " << bench::number(i) << " from " << bench::HOST << " ok");
    });
  });
  comparison.add("ours (debug)", [&] { return nanoseconds([&](long) { logger->debug(&message); }); });

  comparison.gate("a", "ours (macro)", "null", bench::Comparison::AT_MOST, 2, 1.2);
  comparison.gate("a", "ours (debug)", "call", bench::Comparison::AT_MOST, 1.3, 1.1);
  comparison.run();
}
