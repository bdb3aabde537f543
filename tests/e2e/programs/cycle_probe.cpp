// Configures and shuts down again and again, logging in between. Prints the open descriptors and the bytes in use after
// the first tenth of the cycles and at the end.
//
//   cycle_probe <log.xml> <cycles>

#include <malloc.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>

#include "log4vrk/log4vrk.h"

namespace {

void report() {
  const auto descriptors =
      std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
  std::cout << descriptors << " " << ::mallinfo2().uordblks << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const int cycles = std::atoi(argv[2]);
  for (int i = 1; i <= cycles; ++i) {
    if (LOG4VRKConfigurator::initialize(argv[1]) == 0) return 1;
    LOGNDC::push("a text that is too long for a string's own buffer");
    LOGManager::getLogger("cycle.a")->info("cycle");
    LOGNDC::pop();
    LOG4VRKConfigurator::shutdown();
    if (i == cycles / 10) report();
  }
  report();
}
