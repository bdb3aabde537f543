// What the soaks share. Each is one test; main() is in Soak.cpp.

#pragma once

#include <unistd.h>

#include <fstream>
#include <sstream>

#include "tests/support/Load.h"
#include "tests/support/Tests.h"

namespace vrktest {

/// `count` times the scale of this run, at least 1.
long scaled(double count);

/// The line of figures, once a soak has done its work.
void report(const std::string& figures);

/// What this process has in physical memory, in KiB.
inline long residentMemory() {
  long pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

/// For the line of figures.
template <typename... Parts>
std::string text(const Parts&... parts) {
  std::ostringstream all;
  (all << ... << parts);
  return all.str();
}

}  // namespace vrktest
