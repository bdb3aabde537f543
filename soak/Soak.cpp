// Runs one soak: soak [--scale <factor>] <name>. Exit status 0 when all that it promises held.

#include "soak/Soak.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

double g_scale = 1;
const auto g_start = std::chrono::steady_clock::now();

// Says nothing but what failed: the line of figures is the soak's own.
struct FailurePrinter : testing::EmptyTestEventListener {
  void OnTestPartResult(const testing::TestPartResult& part) override {
    if (!part.failed()) return;
    std::fprintf(stderr, "%s:%d: %s\n", part.file_name() ? part.file_name() : "?", part.line_number(), part.message());
  }
};

int usage() {
  std::fprintf(stderr, "usage: soak [--scale <factor>] <name>, one of:");
  const testing::UnitTest& all = *testing::UnitTest::GetInstance();
  for (int i = 0; i < all.GetTestSuite(0)->total_test_count(); ++i) {
    std::fprintf(stderr, " %s", all.GetTestSuite(0)->GetTestInfo(i)->name());
  }
  std::fprintf(stderr, "\n");
  return 2;
}

}  // namespace

long vrktest::scaled(double count) { return std::max(1L, static_cast<long>(count * g_scale)); }

void vrktest::report(const std::string& figures) {
  const testing::UnitTest& all = *testing::UnitTest::GetInstance();
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - g_start;
  std::printf("%s: %s; %.0f s%s\n", all.current_test_info()->name(), figures.c_str(), time.count(),
              testing::Test::HasFailure() ? "; FAILED" : "");
}

int main(int argc, char** argv) {
  int at = 1;
  if (argc > 2 && std::strcmp(argv[1], "--scale") == 0) {
    g_scale = std::atof(argv[2]);  // before the locale is set, which may have a comma for the point
    at = 3;
  }
  std::setlocale(LC_ALL, "");
  int noArguments = 1;
  testing::InitGoogleTest(&noArguments, argv);
  if (at + 1 != argc || !(g_scale > 0)) return usage();
  std::string name = argv[at];
  std::replace(name.begin(), name.end(), '-', '?');  // in a filter a dash begins what is left out
  GTEST_FLAG_SET(filter, "Soak." + name);
  testing::TestEventListeners& listeners = testing::UnitTest::GetInstance()->listeners();
  delete listeners.Release(listeners.default_result_printer());
  listeners.Append(new FailurePrinter);
  const int status = RUN_ALL_TESTS();
  return testing::UnitTest::GetInstance()->test_to_run_count() == 1 ? status : usage();
}
