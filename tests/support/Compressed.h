// Reads log files as they are, and as they are compressed.

#pragma once

#include <zlib.h>
#include <zstd.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "tests/support/TempDir.h"

namespace vrktest {

/// What a file holds, uncompressed when its name ends in .gz or .zst; empty when there is none. Raises
/// std::runtime_error when that is damaged or cut short.
inline std::string contentOf(const std::string& path) {
  const std::string ending = std::filesystem::path(path).extension();
  std::string text, room(1 << 20, '\0');
  if (ending == ".zst") {
    const std::string bytes = fileText(path);
    const std::size_t size = ::ZSTD_decompress(room.data(), room.size(), bytes.data(), bytes.size());
    if (::ZSTD_isError(size) != 0) throw std::runtime_error(path + ": " + ::ZSTD_getErrorName(size));
    return room.substr(0, size);
  }
  const gzFile file = ::gzopen(path.c_str(), "rb");
  if (file == nullptr) return "";
  int count = 0;
  while ((count = ::gzread(file, room.data(), static_cast<unsigned>(room.size()))) > 0) {
    text.append(room, 0, static_cast<std::size_t>(count));
  }
  const bool isAsNamed = (::gzdirect(file) == 0) == (ending == ".gz");
  if (::gzclose(file) != Z_OK || count < 0 || !isAsNamed) throw std::runtime_error(path + " is damaged");
  return text;
}

}  // namespace vrktest
