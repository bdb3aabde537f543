#include "log4vrk/log4vrk.h"

int main() {
  LOG4VRKConfigurator::initialize("hello.xml");
  LOGLogger* logger = LOGManager::getLogger("hello.world");
  logger->info("Hello, log.");
  for (int cups = 1; cups <= 3; ++cups) LOG4VRK_DEBUG(logger, "cup " << cups << " of " << 3);
  logger->warn("No more coffee.");
  LOG4VRKConfigurator::shutdown();
}
