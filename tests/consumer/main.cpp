#include <cstdio>

#include "log4vrk/log4vrk.h"

int main() {
  if (LOG4VRKConfigurator::initialize("log.xml") != 1) {
    std::fputs("log.xml was not applied\n", stderr);
    return 1;
  }
  LOGLogger* logger = LOGManager::getLogger("consumer");
  logger->info(I18NString("hello from outside the tree"));
  LOG4VRKConfigurator::shutdown();
  return 0;
}
