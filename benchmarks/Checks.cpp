#include "benchmarks/Checks.h"

#include <cstdio>

namespace bench {

std::atomic<int> level{20000};

void evaluate(int number) { std::printf("%d\n", number); }

void checkLevel(int rank, int number) {
  if (level.load(std::memory_order_relaxed) <= rank) evaluate(number);
}

}  // namespace bench
