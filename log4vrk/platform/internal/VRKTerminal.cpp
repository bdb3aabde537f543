#include "log4vrk/platform/internal/VRKTerminal.h"

#include <unistd.h>

#include "log4vrk/platform/internal/VRKProcess.h"

bool VRKTerminal::wantsColors(int descriptor) {
  const std::string terminal = VRKProcess::environment("TERM");
  return VRKProcess::environment("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb" &&
         ::isatty(descriptor) == 1;
}
