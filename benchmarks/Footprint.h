// What the programs have in common that g starts, each with one logger and nothing else in it:
//   footprint_NAME memory FILE EVENTS   four threads log behind a queue; prints the peak of the resident memory in kB
//   footprint_NAME small FILE           logs one event; prints the peak as above
//   footprint_NAME setup FILE           sets up and logs one event; prints the nanoseconds since main() began; ours
//   also takes a
//                                       document that names the file

#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

#include "benchmarks/Harness.h"

namespace bench {

inline long peakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) return std::strtol(line.c_str() + 6, nullptr, 10);
  }
  return 0;
}

/// `logAll(path, threads, events)` makes each thread's calls and closes; `setUp(path)` logs one event.
template <typename LogAll, typename SetUp>
int footprint(int argc, char** argv, LogAll logAll, SetUp setUp) {
  const auto begin = std::chrono::steady_clock::now();
  const std::string_view what = argc > 2 ? argv[1] : "";
  if (what == "memory" && argc == 4) {
    logAll(argv[2], 4, std::strtol(argv[3], nullptr, 10));
    std::printf("%ld\n", peakMemory());
    return 0;
  }
  if (what == "small") {
    setUp(argv[2]);
    std::printf("%ld\n", peakMemory());
    return 0;
  }
  if (what == "setup") {
    setUp(argv[2]);
    const std::chrono::nanoseconds elapsed = std::chrono::steady_clock::now() - begin;
    std::printf("%lld\n", static_cast<long long>(elapsed.count()));
    return 0;
  }
  return 2;
}

}  // namespace bench
