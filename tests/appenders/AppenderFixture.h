// The fixture that the tests of appenders share.

#pragma once

#include <poll.h>

#include "tests/support/Tests.h"

/// An event with a text of its own.
class TestEvent : public LOGLoggingEvent {
 public:
  explicit TestEvent(const std::string& text, LOGLevel* level = LOGLevel::INFO_OBJ)
      : LOGLoggingEvent("test", &s_logger, level, nullptr) {
    setRenderedMessage(text.c_str());
  }

 private:
  inline static LOGLogger s_logger{"a.b"};
};

/// Puts a terminal, or a pipe that keeps writes apart, in the place of a descriptor.
class Redirected {
 public:
  explicit Redirected(int descriptor, bool toTerminal = false) : m_descriptor(descriptor), m_saved(::dup(descriptor)) {
    int other = -1;
    if (toTerminal) {
      m_reader = ::posix_openpt(O_RDWR | O_NOCTTY);
      ::grantpt(m_reader), ::unlockpt(m_reader);
      other = ::open(::ptsname(m_reader), O_RDWR | O_NOCTTY);
    } else {
      int ends[2] = {-1, -1};
      if (::pipe2(ends, O_DIRECT) == 0) m_reader = ends[0], other = ends[1];
    }
    ::dup2(other, descriptor);
    ::close(other);
  }
  ~Redirected() { ::dup2(m_saved, m_descriptor), ::close(m_saved), ::close(m_reader); }

  /// What one write has left there, as it was written; empty: none has.
  std::string next() const {
    pollfd ready{m_reader, POLLIN, 0};
    char bytes[4096];
    const long count = ::poll(&ready, 1, 0) == 1 ? ::read(m_reader, bytes, sizeof bytes) : 0;
    std::string text(bytes, bytes + std::max(count, 0L));
    for (std::size_t at; (at = text.find("\r\n")) != text.npos;) text.erase(at, 1);  // the terminal's own
    return text;
  }

 private:
  const int m_descriptor, m_saved;
  int m_reader = -1;
};

class AppenderFixture : public testing::Test {
 protected:
  void TearDown() override { VRKFault::disarm(); }

  /// Logs each text, as a logger does it. The layout adds a line feed.
  template <typename... Texts>
  static void log(LOGAppenderSkeleton& appender, const Texts&... texts) {
    for (const std::string& text : {std::string(texts)...}) logAt(appender, LOGLevel::INFO_OBJ, text);
  }
  static void logAt(LOGAppenderSkeleton& appender, LOGLevel* level, const std::string& text) {
    TestEvent event(text, level);
    appender.activateOptions();
    appender.doAppend(&event);
  }

  I18NString path(const std::string& name) const { return I18NString(m_dir.file(name).c_str()); }

  const vrktest::TempDir m_dir;
  const InternalLog m_log;
  LOGLayout m_layout;
};

constexpr char CLOSED[] = "log4vrk:ERROR Attempted to append to closed appender named [].\n";
