#include "tests/appenders/AppenderFixture.h"

namespace {

using ConsoleAppenderTest = AppenderFixture;

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
    const Redirected out(1), err(2);
    const bool toOut = target != "ERR";
    LOGConsoleAppender appender(&m_layout, target.c_str());
    TestEvent early("lost");
    appender.doAppend(&early);
    EXPECT_EQ(m_log.lines().back() + "\n", CLOSED) << "the first activation takes the stream";
    for (const char* text : {"one", "two"}) {
      log(appender, text);
      EXPECT_EQ((toOut ? out : err).next(), std::string(text) + "\n");
      EXPECT_EQ((toOut ? err : out).next(), "");
    }
  }
  EXPECT_EQ(m_log.count("log4vrk:WARN LOGConsoleAppender::targetWarn -- possible values are out and err"), 1);
  EXPECT_EQ(m_log.count("log4vrk:WARN LOGConsoleAppender::targetWarn -- using out (default)"), 1);
}

TEST_F(ConsoleAppenderTest, ClosingLeavesTheDescriptorOpenAndLastsUntilTheNextTarget) {
  const Redirected out(1);
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
  EXPECT_EQ((vrktest::Texts{out.next(), out.next(), out.next()}), (vrktest::Texts{"one\n", "two\n", "three\n"}));
}

TEST_F(ConsoleAppenderTest, ReportsWhyAnEventWasLost) {
  const Redirected out(1);
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
  EXPECT_EQ(out.next(), "written\n");
}
