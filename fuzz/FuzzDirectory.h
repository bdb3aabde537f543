// What the fuzz targets share that write files.

#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace vrkfuzz {

inline void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

/// A directory of this process, which ends with it.
struct Directory {
  explicit Directory(const char* target)
      : path(std::filesystem::temp_directory_path() / (std::string(target) + "-" + std::to_string(::getpid()))) {
    std::filesystem::create_directory(path);
  }
  ~Directory() { std::filesystem::remove_all(path); }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  std::string file(const char* name) const { return path / name; }

  const std::filesystem::path path;
};

}  // namespace vrkfuzz
