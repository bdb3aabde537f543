// What the library writes to its internal log, for tests.

#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "log4vrk/core/LOGLogLog.h"

/// Sees what is written to the internal log after it was made. The library reads the log's settings once in a process,
/// so the file is set up before main() for every test program that includes this.
class InternalLog {
 public:
  InternalLog() : m_seen(whole().size()) {}

  std::string text() const { return whole().substr(m_seen); }
  std::vector<std::string> lines() const {
    std::istringstream in(text());
    std::vector<std::string> result;
    for (std::string line; std::getline(in, line);) result.push_back(line);
    return result;
  }
  /// How many lines hold `part`.
  long count(const std::string& part) const {
    const std::vector<std::string> all = lines();
    return std::count_if(all.begin(), all.end(), [&](const std::string& line) { return line.find(part) != line.npos; });
  }
  bool contains(const std::string& part) const { return count(part) > 0; }

 private:
  struct File {
    File() : owner(::getpid()) {
      char name[] = "/tmp/log4vrk-test-XXXXXX";
      folder = ::mkdtemp(name);
      std::filesystem::create_directories(folder / "configuration");
      std::filesystem::create_directories(folder / "work");
      std::ofstream(folder / "configuration/logdebug.ini") << "1 " << (folder / "internal.log").string() << "\n";
      const std::filesystem::path before = std::filesystem::current_path();
      std::filesystem::current_path(folder / "work");
      LOGLogLog::init();
      std::filesystem::current_path(before);
    }
    ~File() {
      if (::getpid() == owner) std::filesystem::remove_all(folder);
    }

    const pid_t owner;  // a forked child leaves the folder alone
    std::filesystem::path folder;
  };

  static std::string whole() {
    std::ifstream in(s_file.folder / "internal.log", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  inline static const File s_file;
  std::size_t m_seen;
};
