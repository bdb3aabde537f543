#include "tests/appenders/AppenderFixture.h"

using ConsoleAppenderTest = AppenderFixture;

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

TEST_F(ConsoleAppenderTest, ReportsWhatCannotBeFlushed) {
  const Redirected out(1);
  LOGConsoleAppender appender(&m_layout);
  appender.activateOptions();
  VRKFault::arm(VRKFault::FILE_FLUSH);
  log(appender, "written");
  EXPECT_EQ(m_log.count("LOGQuietWriter::stWrite -- VRKThrowable exception occurred"), 1) << "each event is flushed";
  EXPECT_EQ(out.next(), "written\n");
}
