// Takes orders, and is killed while its queue still holds them when it is called with "die". The next start delivers
// them first: no order is missing from orders.log, and none is there twice.

#include <csignal>
#include <cstdio>
#include <cstring>

#include "log4vrk/log4vrk.h"

int main(int argc, char** argv) {
  if (LOG4VRKConfigurator::initialize("orders.xml") != 1) {
    std::fputs("orders.xml was not applied; LOG4VRK_INTERNAL_LOG=stderr says why\n", stderr);
    return 1;
  }
  LOGLogger* logger = LOGManager::getLogger("orders");
  if (argc > 1 && std::strcmp(argv[1], "die") == 0) {
    LOGNDC::push("till 7");
    for (int number = 1; number <= 5; ++number) LOG4VRK_INFO(logger, "order " << number);
    std::raise(SIGKILL);
  }
  logger->info("started");
  LOG4VRKConfigurator::shutdown();
}
