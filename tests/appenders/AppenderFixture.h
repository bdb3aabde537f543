// The fixture that the tests of appenders share.

#pragma once

#include "tests/support/Tests.h"

/// An event with a text of its own.
class TestEvent : public LOGLoggingEvent {
 public:
  explicit TestEvent(const std::string& text, LOGLevel* level = LOGLevel::INFO_OBJ)
      : LOGLoggingEvent("test", &logger(), level, nullptr) {
    setRenderedMessage(text.c_str());
  }

 private:
  static LOGLogger& logger() {
    static LOGLogger logger("a.b");
    return logger;
  }
};

class AppenderFixture : public testing::Test {
 protected:
  void TearDown() override { VRKFault::disarm(); }

  /// Logs each text, as a logger does it. The layout adds a line feed.
  template <typename... Texts>
  static void log(LOGAppenderSkeleton& appender, const Texts&... texts) {
    for (const std::string& text : {std::string(texts)...}) {
      TestEvent event(text);
      appender.activateOptions();
      appender.doAppend(&event);
    }
  }
  /// Whether a failure that was armed has been met since.
  static bool metFault(VRKFault::Point point) { return !VRKFault::hit(point); }

  I18NString path(const std::string& name) const { return I18NString(m_dir.file(name).c_str()); }

  const vrktest::TempDir m_dir;
  const InternalLog m_log;
  LOGLayout m_layout;
};

constexpr char CLOSED[] = "log4vrk:ERROR Attempted to append to closed appender named [].\n";
