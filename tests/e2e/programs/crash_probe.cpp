// Logs numbered lines to a file for ever, and counts the log calls that have returned in a file mapped into memory.
//
//   crash_probe <log.xml> <counter file>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>

#include "log4vrk/log4vrk.h"

int main(int argc, char** argv) {
  if (argc != 3 || LOG4VRKConfigurator::initialize(argv[1]) == 0) return 2;
  const int descriptor = ::open(argv[2], O_RDWR);
  void* const memory = ::mmap(nullptr, sizeof(std::atomic<long>), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  if (memory == MAP_FAILED) return 2;
  auto& returned = *static_cast<std::atomic<long>*>(memory);
  LOGLogger* const logger = LOGManager::getLogger("crash");
  for (long n = 1;; ++n) {
    LOG4VRK_INFO(logger, "0 " << n << " end");
    returned = n;
  }
}
