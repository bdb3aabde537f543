// Serves so many requests, by default 500, and logs them. A SIGHUP has it open access.log anew, after somebody has
// renamed that.

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "log4vrk/log4vrk.h"

namespace {

LOGTimeRollingFileAppender* g_file = nullptr;

}  // namespace

int main(int argc, char** argv) {
  if (LOG4VRKConfigurator::initialize("access.xml") != 1) {
    std::fputs((LOG4VRKConfigurator::getProblems().toUtf8() + "access.xml was not applied\n").c_str(), stderr);
    return 1;
  }
  LOGLogger* const logger = LOGManager::getRootLogger();
  g_file = dynamic_cast<LOGTimeRollingFileAppender*>(logger->getAppender("access"));
  if (g_file != nullptr) std::signal(SIGHUP, [](int) { g_file->requestReopen(); });
  const int requests = argc > 1 ? std::atoi(argv[1]) : 500;
  for (int number = 1; number <= requests; ++number) LOG4VRK_INFO(logger, "GET /basket/" << number << " 200");
  std::signal(SIGHUP, SIG_IGN);
  LOG4VRKConfigurator::shutdown();
}
