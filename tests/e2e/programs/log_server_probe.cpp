// Logs to a log server on this machine, or delivers what a process before has left in the recovery files.
//
//   log_server_probe <directory> <port> <writer>  that writer's numbered lines for ever, some thousand a second. The file
//                                                 "counters" in the directory gets how many log calls have returned, and
//                                                 of how many it is known at least that the server or a recovery file has
//                                                 them.
//   log_server_probe <directory> <port> deliver   ends with 0 when the recovery files are empty; adds one line of
//                                                 its own, with the process as the writer.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <string>

#include "log4vrk/log4vrk.h"

namespace {

void log(LOGLogger* logger, const LOGTCPSocketAppender& appender, const char* writer) {
  struct Counters {
    std::atomic<long> returned, safe;
  };
  const int descriptor = ::open("counters", O_RDWR | O_CLOEXEC);
  void* const memory = ::mmap(nullptr, sizeof(Counters), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  if (memory == MAP_FAILED) ::_exit(2);
  auto& counters = *static_cast<Counters*>(memory);
  for (long n = 1;; ++n) {
    LOG4VRK_INFO(logger, writer << " " << n << " end");
    counters.returned = n;
    // In this order no event counts twice.
    const auto acknowledged = static_cast<long>(appender.getAcknowledged());
    counters.safe = std::max(counters.safe.load(), acknowledged + static_cast<long>(appender.getInRecovery()));
    if (n % 10 == 0) VRKThread::sleep(1000);
  }
}

// An event of its own goes behind what is in the files: when anything is acknowledged, the files have been read.
bool deliver(LOGLogger* logger, const LOGTCPSocketAppender& appender) {
  LOG4VRK_INFO(logger, ::getpid() << " 1 end");
  for (int attempt = 0; attempt < 60000; ++attempt) {
    VRKThread::sleep(1000);
    if (appender.getAcknowledged() > 0 && appender.getInRecovery() == 0) return true;
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4 || ::chdir(argv[1]) != 0) return 2;
  LOGTCPSocketAppender appender;
  appender.setName("probe");
  appender.setRemoteHost("127.0.0.1");
  appender.setPort(std::stol(argv[2]));
  LOGLogger* const logger = LOGManager::getLogger("probe");
  logger->addAppender(&appender);
  appender.activateOptions();
  if (argv[3] != std::string("deliver")) log(logger, appender, argv[3]);
  const bool delivered = deliver(logger, appender);
  logger->removeAppender(&appender);
  return delivered ? 0 : 1;
}
