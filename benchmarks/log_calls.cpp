// Makes log calls and nothing else, for ./dev bench instructions: log_calls disabled|enabled COUNT

#include <cstdlib>
#include <string_view>

#include "benchmarks/Ours.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const bool enabled = std::string_view(argv[1]) == "enabled";
  const long count = std::strtol(argv[2], nullptr, 10);
  bench::OurLog log("/dev/null");
  if (!enabled) LOGManager::getRootLogger()->setLevel(LOGLevel::WARN_OBJ);
  for (long i = 0; i < count; ++i) log.log(i);
}
