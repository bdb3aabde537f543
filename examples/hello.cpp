#include <cstdio>

#include "log4vrk/log4vrk.h"

int main() {
  if (LOG4VRKConfigurator::initialize("hello.xml") != 1) {
    std::fputs((LOG4VRKConfigurator::getProblems().toUtf8() + "hello.xml was not applied\n").c_str(), stderr);
    return 1;
  }
  LOGLogger* logger = LOGManager::getLogger("hello.world");
  logger->info("Hello, log.");
  for (int cups = 1; cups <= 3; ++cups) LOG4VRK_DEBUG(logger, "cup " << cups << " of " << 3);
  logger->warn("No more coffee.");
  LOG4VRKConfigurator::shutdown();
}
