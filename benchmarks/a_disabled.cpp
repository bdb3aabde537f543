// a. What a call costs that the level disables, in a function of a program that is not inlined: what such a function
// does before it asks the level counts, too.

#include "benchmarks/Checks.h"
#include "benchmarks/Harness.h"
#include "benchmarks/Line.h"
#include "benchmarks/Peers.h"
#include "log4vrk/log4vrk.h"

#ifdef LOG4VRK_PEER_SPDLOG
#include <spdlog/sinks/null_sink.h>
#endif

// The functions that log, each called in a loop.
#define BENCH_FUNCTION [[gnu::noinline]] void

namespace {

BENCH_FUNCTION null(std::atomic<int>& level, int number) {
  if (level.load(std::memory_order_relaxed) <= 10000) bench::evaluate(number);
}
BENCH_FUNCTION call(int number) { bench::checkLevel(10000, number); }

BENCH_FUNCTION macro(LOGLogger* logger, int number) {
  LOG4VRK_DEBUG(logger, "request " << number << " from " << bench::HOST << " ok");
}
BENCH_FUNCTION object(LOGLogger* logger, LOGObject* message) { logger->debug(message); }
BENCH_FUNCTION text(LOGLogger* logger) { logger->debug("request 123456 from host-042.example.org ok"); }

#ifdef LOG4VRK_PEER_SPDLOG
BENCH_FUNCTION spdlogMacro(bench::SpdlogLog& log, int number) {
  log.logger().debug("request {} from {} ok", number, bench::HOST);
}
#endif
#ifdef LOG4VRK_PEER_GLOG
BENCH_FUNCTION glogMacro(int number) { VLOG(1) << "request " << number << " from " << bench::HOST << " ok"; }
#endif

}  // namespace

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  const long calls = settings.count(30'000'000);
  const auto nanoseconds = [calls](auto call) {
    const double seconds = bench::seconds(
        1, calls, [&](long i) __attribute__((always_inline)) {
          bench::fence();
          call(bench::number(i));
        });
    return seconds * 1e9 / static_cast<double>(calls);
  };

  LOGManager::getRootLogger()->setLevel(LOGLevel::INFO_OBJ);
  LOGManager::getLogger("com.acme");
  LOGLogger* const logger = LOGManager::getLogger(bench::LOGGER);
  LOGObject message(I18NString("request 123456 from host-042.example.org ok"));

  bench::Comparison comparison(settings, {{"a", "ns/call"}});
  comparison.add("null", [&] { return nanoseconds([](int number) { null(bench::level, number); }); });
  comparison.add("call", [&] { return nanoseconds([](int number) { call(number); }); });
#ifdef LOG4VRK_PEER_SPDLOG
  bench::SpdlogLog spdlogLog(std::make_shared<spdlog::sinks::null_sink_mt>(), false);
  comparison.add("spdlog", [&] { return nanoseconds([&](int number) { spdlogMacro(spdlogLog, number); }); });
#endif
#ifdef LOG4VRK_PEER_GLOG
  comparison.add("glog", [&] { return nanoseconds([](int number) { glogMacro(number); }); });
#endif
  comparison.add("ours (macro)", [&] { return nanoseconds([&](int number) { macro(logger, number); }); });
  comparison.add("ours (object)", [&] { return nanoseconds([&](int) { object(logger, &message); }); });
  comparison.add("ours (text)", [&] { return nanoseconds([&](int) { text(logger); }); });

  comparison.gate("a", "ours (macro)", "null", bench::Comparison::AT_MOST, 1.5, 1.1);
  comparison.gate("a", "ours (object)", "call", bench::Comparison::AT_MOST, 1.3, 1.0);
  comparison.gate("a", "ours (text)", "call", bench::Comparison::AT_MOST, 1.3, 1.0);
  comparison.run();
}
