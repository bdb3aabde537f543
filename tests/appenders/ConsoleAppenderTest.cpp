#include "tests/appenders/AppenderFixture.h"

namespace {

using ConsoleAppenderTest = AppenderFixture;

/// Catches in a file what is written to a descriptor.
class Captured {
 public:
  explicit Captured(int descriptor) : m_descriptor(descriptor), m_saved(::dup(descriptor)) {
    ::dup2(::fileno(m_file.get()), descriptor);
  }
  ~Captured() { ::dup2(m_saved, m_descriptor), ::close(m_saved); }

  std::string text() const { return vrktest::fileText("/proc/self/fd/" + std::to_string(::fileno(m_file.get()))); }

 private:
  const int m_descriptor, m_saved;
  const std::unique_ptr<FILE, int (*)(FILE*)> m_file{std::tmpfile(), std::fclose};
};

struct FailingLayout : LOGLayout {
  I18NString& format(LOGLoggingEvent*) override {
    if (foreign) throw 7;
    throw VRKThrowable("no text", VRK_HERE);
  }
  bool foreign = false;
};

}  // namespace

TEST_F(ConsoleAppenderTest, WritesEachEventAtOnceToTheStreamOfItsTarget) {
  for (const std::string target : {"Out", "ERR", "unknown"}) {
    const Captured out(1), err(2);
    const bool toOut = target != "ERR";
    LOGConsoleAppender appender(&m_layout, target.c_str());
    TestEvent early("lost");
    appender.doAppend(&early);
    EXPECT_EQ(m_log.lines().back() + "\n", CLOSED) << "the first activation takes the stream";
    for (const char* text : {"one\n", "one\none\n"}) {
      log(appender, "one");
      EXPECT_EQ((toOut ? out : err).text(), text);
      EXPECT_EQ((toOut ? err : out).text(), "");
    }
  }
  EXPECT_EQ(m_log.count("log4vrk:WARN LOGConsoleAppender::targetWarn -- possible values are out and err"), 1);
  EXPECT_EQ(m_log.count("log4vrk:WARN LOGConsoleAppender::targetWarn -- using out (default)"), 1);
}

TEST_F(ConsoleAppenderTest, ClosingLeavesTheDescriptorOpenAndLastsUntilTheNextTarget) {
  const Captured out(1);
  {
    LOGConsoleAppender appender(&m_layout);
    VRKFault::arm(VRKFault::FILE_ATTACH);
    log(appender, "lost", "one");
    EXPECT_EQ(m_log.text(), CLOSED) << "a stream that cannot be had is tried again";
    appender.close();
    log(appender, "lost");
    EXPECT_EQ(m_log.text(), std::string(CLOSED) + CLOSED);
    appender.setTarget("out");
    log(appender, "two");
  }
  EXPECT_EQ(::write(1, "three\n", 6), 6);
  EXPECT_EQ(out.text(), "one\ntwo\nthree\n");
}

TEST_F(ConsoleAppenderTest, ReportsWhyAnEventWasLost) {
  const Captured out(1);
  FailingLayout layout;
  LOGConsoleAppender appender;
  log(appender, "no layout, no report");
  TestEvent event("lost");
  const LOGGuard guard(appender);
  EXPECT_THROW(appender.subappend(&event), VRKAssertError);
  appender.setLayout(&layout);
  appender.subappend(&event);
  layout.foreign = true;
  EXPECT_THROW(appender.subappend(&event), int);
  const std::string start = "log4vrk:ERROR LOGAppenderSkeleton::subAppend -- ";
  EXPECT_EQ(m_log.lines().at(0), "log4vrk:ERROR LOGConsoleAppender::subappend -- NULL layout");
  EXPECT_EQ(m_log.lines().at(1).find(start + "VRKThrowable: no text"), 0u);
  EXPECT_EQ(m_log.lines().at(2), start);
  appender.setLayout(&m_layout);
  VRKFault::arm(VRKFault::FILE_FLUSH);
  log(appender, "written");
  EXPECT_EQ(m_log.count("LOGQuietWriter::stWrite -- VRKThrowable exception occurred"), 1) << "each event is flushed";
  EXPECT_EQ(out.text(), "written\n");
}
