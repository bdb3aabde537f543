// The least that a logger could do: the finished line, written.

#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace bench {

/// One write(2) for each line.
///
/// Thread safety: not thread-safe, here and below; with several threads the caller has a mutex.
class UnbufferedFile {
 public:
  explicit UnbufferedFile(const std::string& path)
      : m_file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0644)) {
    if (m_file < 0) {
      std::perror(path.c_str());
      std::exit(1);
    }
  }
  ~UnbufferedFile() { ::close(m_file); }
  UnbufferedFile(const UnbufferedFile&) = delete;
  UnbufferedFile& operator=(const UnbufferedFile&) = delete;

  void write(std::string_view text) {
    if (::write(m_file, text.data(), text.size()) == static_cast<ssize_t>(text.size())) return;
    std::perror("write");
    std::exit(1);
  }

 private:
  int m_file;
};

/// One write(2) for each 64 KiB.
class BufferedFile {
 public:
  explicit BufferedFile(const std::string& path) : m_file(path) {}
  ~BufferedFile() { flush(); }

  void write(std::string_view text) {
    if (text.size() > sizeof m_buffer - m_used) flush();
    std::memcpy(m_buffer + m_used, text.data(), text.size());
    m_used += text.size();
  }

  void flush() {
    if (m_used > 0) m_file.write({m_buffer, m_used});
    m_used = 0;
  }

 private:
  UnbufferedFile m_file;
  std::size_t m_used = 0;
  char m_buffer[65536];
};

}  // namespace bench
