#include "tests/appenders/AppenderFixture.h"

using ColorConsoleAppenderTest = AppenderFixture;

TEST_F(ColorConsoleAppenderTest, ColorsLinesOnATerminalThatWantsThem) {
  const std::tuple<bool, const char*, const char*, const char*, bool> CASES[] = {
      {true, "xterm", nullptr, "auto", true},     {true, "xterm", "", "auto", true},
      {true, "xterm", "1", "auto", false},        {true, "dumb", nullptr, "auto", false},
      {true, "", nullptr, "auto", false},         {false, "xterm", nullptr, "auto", false},
      {false, "dumb", "1", "ALWAYS", true},       {true, "xterm", nullptr, "never", false},
      {true, "xterm", nullptr, "sometimes", true}};
  for (const int descriptor : {1, 2}) {
    for (const auto& [isTerminal, term, noColor, colors, expected] : CASES) {
      ::setenv("TERM", term, 1);
      noColor != nullptr ? ::setenv("NO_COLOR", noColor, 1) : ::unsetenv("NO_COLOR");
      const Redirected stream(descriptor, isTerminal);
      LOGColorConsoleAppender appender(&m_layout);
      appender.setColors(colors);
      appender.setTarget(descriptor == 1 ? "out" : "Err");
      logAt(appender, LOGLevel::ERROR_OBJ, "no");
      EXPECT_EQ(stream.next(), expected ? "\033[31mno\033[0m\n" : "no\n") << term << " " << colors;
    }
  }
  EXPECT_EQ(m_log.count("LOGColorConsoleAppender::setColors -- possible values are auto, always and never"), 2);
}

TEST_F(ColorConsoleAppenderTest, WritesALineWithItsColorAndSeverityAtOnce) {
  LOGLevel notice(25000, "NOTICE", 5), panic(60000, "PANIC", 0), odd(5000, "ODD", 70);
  const std::tuple<LOGLevel*, const char*, const char*, const char*> CASES[] = {
      {LOGLevel::DEBUG_OBJ, "a", "<7>a\n", "<7>\033[2ma\033[0m\n"},
      {LOGLevel::INFO_OBJ, "a", "<6>a\n", "<6>a\n"},
      {&notice, "a", "<5>a\n", "<5>a\n"},
      {LOGLevel::WARN_OBJ, "a\nb", "<4>a\n<4>b\n", "<4>\033[1;94ma\033[0m\n<4>\033[1;94mb\033[0m\n"},
      {LOGLevel::ERROR_OBJ, "\na", "<3>\n<3>a\n", "<3>\n<3>\033[38;5;9ma\033[0m\n"},
      {LOGLevel::FATAL_OBJ, "a", "<2>a\n", "<2>\033[1;31ma\033[0m\n"},
      {&panic, "a", "<0>a\n", "<0>\033[1;31ma\033[0m\n"},
      {&odd, "", "<7>\n", "<7>\n"}};
  const Redirected stream(1, false);
  LOGColorConsoleAppender appender(&m_layout);
  appender.setPrefix("SD-daemon");
  appender.setColor(*LOGLevel::WARN_OBJ, " Bold  bright-blue");
  appender.setColor(*LOGLevel::ERROR_OBJ, "38;5;9");
  for (const auto& [level, text, plain, colored] : CASES) {
    appender.setColors("never");
    logAt(appender, level, text);
    EXPECT_EQ(stream.next(), plain);
    appender.setColors("always");
    logAt(appender, level, text);
    EXPECT_EQ(stream.next(), colored) << "one write";
    EXPECT_EQ(stream.next(), "");
  }
  for (const char* const wrong : {"", " ", "redd", "bright-bold", "bright-31", "1;31m", "red,bold"}) {
    appender.setColor(*LOGLevel::INFO_OBJ, wrong);
    EXPECT_EQ(appender.getColor(*LOGLevel::INFO_OBJ), I18NString("none")) << wrong;
  }
  appender.setPrefix("syslog");
  EXPECT_EQ(appender.getPrefix(), I18NString("sd-daemon"));
  EXPECT_EQ(m_log.count("LOGColorConsoleAppender::setColor -- there is no colour "), 7);
  EXPECT_EQ(m_log.count("LOGColorConsoleAppender::setPrefix -- possible values are none and sd-daemon"), 1);
}

TEST_F(ColorConsoleAppenderTest, TakesTheFastPathWithItsColorsToo) {
  const Redirected stream(1, false);
  LOGColorConsoleAppender appender(&m_layout);
  appender.setColors("always");
  appender.activateOptions();
  LOGLogger* const logger = LOGManager::getLogger("colors");
  logger->addAppender(&appender);
  LOG4VRK_WARN(logger, "careful");
  logger->info(std::string(40000, 'x'));  // longer than the memory that is kept
  logger->removeAppender(&appender);
  EXPECT_EQ(stream.next(), "\033[33mcareful\033[0m\n");
}
