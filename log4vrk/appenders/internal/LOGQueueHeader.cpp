#include "log4vrk/appenders/internal/LOGQueueHeader.h"

#include <algorithm>
#include <cstring>

#include "log4vrk/platform/internal/VRKProcess.h"
#include "log4vrk/platform/internal/VRKTime.h"

namespace {

template <std::size_t size>
void keepText(char (&to)[size], const std::string& text) {
  std::memcpy(to, text.data(), std::min(text.size(), size - 1));
}

}  // namespace

void LOGQueueHeader::write(char* memory, const Kind& kind, std::uint64_t units, const std::string& name) {
  auto& header = *reinterpret_cast<LOGQueueHeader*>(memory);
  std::memcpy(header.magic, kind.magic, sizeof header.magic);
  header.version = kind.version;
  header.unit = kind.unit;
  header.units = units;
  header.owner = VRKProcess::id();
  const VRKTime::Moment now = VRKTime::now();
  header.created = now.seconds * 1000000000 + now.nanoseconds;
  keepText(header.program, VRKProcess::programName());
  keepText(header.name, name);
  header.check = sumOf(memory, offsetof(LOGQueueHeader, check));
}

LOGQueueHeader::Condition LOGQueueHeader::examine(const char* memory, std::size_t bytes, const Kind& kind,
                                                  std::string& finding) {
  const auto& found = *reinterpret_cast<const LOGQueueHeader*>(memory);
  if (bytes < sizeof found || std::memcmp(found.magic, kind.magic, sizeof found.magic) != 0) {
    finding = "it is not the file of a queue (" + std::to_string(bytes) + " bytes)";
    return USELESS;
  }
  if (found.version > kind.version) {
    finding =
        "its version is " + std::to_string(found.version) + ", and this program knows " + std::to_string(kind.version);
    return NEWER;
  }
  const bool isPowerOfTwo = (found.units & (found.units - 1)) == 0;
  if (found.check != sumOf(memory, offsetof(LOGQueueHeader, check)) || found.version == 0 || found.unit != kind.unit ||
      !isPowerOfTwo || found.units < kind.fewest || found.units > kind.most) {
    finding = "its header is damaged";
    return USELESS;
  }
  const std::size_t whole = kind.size(found.units);
  if (bytes >= whole) return WHOLE;
  finding = "it is truncated to " + std::to_string(bytes) + " of " + std::to_string(whole) + " bytes";
  return bytes <= kind.at ? USELESS : TRUNCATED;
}
