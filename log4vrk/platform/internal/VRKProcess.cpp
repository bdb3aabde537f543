#include "log4vrk/platform/internal/VRKProcess.h"

#include <unistd.h>

#include <cerrno>

long VRKProcess::id() { return ::getpid(); }

std::string VRKProcess::programName() { return ::program_invocation_short_name; }

std::string VRKProcess::hostName() {
  char name[256] = {};
  return ::gethostname(name, sizeof name - 1) == 0 ? name : "";
}
