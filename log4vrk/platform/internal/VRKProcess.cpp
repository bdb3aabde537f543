#include "log4vrk/platform/internal/VRKProcess.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

long VRKProcess::id() { return ::getpid(); }

std::string VRKProcess::programName() { return ::program_invocation_short_name; }

std::string VRKProcess::hostName() {
  char name[256] = {};
  return ::gethostname(name, sizeof name - 1) == 0 ? name : "";
}

// Priorities are those of threads on this system, whatever the names of the calls say.
void VRKProcess::lowerPriorityOfThread() {
  constexpr int OF_ONE = 1, IDLE_CLASS = 3 << 13, LOWEST = 19;
  ::setpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)), LOWEST);
  ::syscall(SYS_ioprio_set, OF_ONE, 0, IDLE_CLASS);
}

long VRKProcess::userId() { return static_cast<long>(::geteuid()); }

std::string VRKProcess::environment(const char* name) {
  const char* const value = ::secure_getenv(name);
  return value != nullptr ? value : "";
}

I18NString VRKProcess::absolutePath(const I18NString& path) {
  std::error_code none;
  const std::filesystem::path here = std::filesystem::current_path(none);
  if (path.isEmpty() || none) return path;
  return I18NString(std::string_view((here / path.toUtf8()).string()));
}
