// A directory that lasts as long as a test.

#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace vrktest {

/// What a file holds; empty when there is none.
inline std::string fileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline std::vector<std::string> linesIn(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

/// The names of what is in a directory, without order; none when there is no such directory.
inline std::vector<std::string> namesIn(const std::string& directory) {
  std::vector<std::string> names;
  std::error_code missing;
  for (const auto& entry : std::filesystem::directory_iterator(directory, missing)) {
    names.push_back(entry.path().filename());
  }
  return names;
}

/// Removed with all that is in it. Names may lead into subdirectories.
class TempDir {
 public:
  TempDir() : m_path((std::filesystem::temp_directory_path() / "log4vrk-XXXXXX").string()) {
    if (!::mkdtemp(m_path.data())) throw std::system_error(errno, std::generic_category(), m_path);
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return m_path; }
  std::string file(const std::string& name) const { return m_path + "/" + name; }

  /// Makes the subdirectories it needs, replaces an older file and returns its path.
  std::string write(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories(std::filesystem::path(file(name)).parent_path());
    std::ofstream out(file(name), std::ios::binary | std::ios::trunc);
    out.exceptions(std::ios::failbit | std::ios::badbit);
    out << text << std::flush;
    return file(name);
  }

  /// Empty when there is no such file.
  std::string read(const std::string& name) const { return fileText(file(name)); }

 private:
  std::string m_path;
};

}  // namespace vrktest
