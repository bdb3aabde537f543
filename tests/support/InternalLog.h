// Reads what the library writes to its internal log.

#pragma once

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "log4vrk/core/LOGLogLog.h"
#include "tests/support/TempDir.h"

/// Sees what is written to the internal log after it was made. The library reads the log's settings once in a process,
/// so the file is set up before main() for every test program that includes this.
class InternalLog {
 public:
  InternalLog() : m_seen(whole().size()) {}

  std::string text() const { return whole().substr(m_seen); }
  std::vector<std::string> lines() const { return vrktest::linesIn(text()); }
  /// How many lines hold `part`.
  long count(const std::string& part) const {
    const std::vector<std::string> all = lines();
    return std::count_if(all.begin(), all.end(), [&](const std::string& line) { return line.find(part) != line.npos; });
  }
  bool contains(const std::string& part) const { return count(part) > 0; }

 private:
  struct File {
    File() {
      const std::filesystem::path before = std::filesystem::current_path();
      folder->write("configuration/logdebug.ini", "1 " + folder->file("internal.log") + "\n");
      std::filesystem::create_directory(folder->file("work"));
      std::filesystem::current_path(folder->file("work"));
      LOGLogLog::init();
      std::filesystem::current_path(before);
    }
    ~File() {
      [[maybe_unused]] static void* left = nullptr;      // so that it is no leak of a child that calls exit()
      if (::getpid() != owner) left = folder.release();  // a forked child leaves the folder alone
    }

    const pid_t owner = ::getpid();
    std::unique_ptr<vrktest::TempDir> folder = std::make_unique<vrktest::TempDir>();
  };

  static std::string whole() { return s_file.folder->read("internal.log"); }

  inline static const File s_file;
  std::size_t m_seen;
};
