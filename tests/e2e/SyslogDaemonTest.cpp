// What a real syslog daemon stores of what the syslog appender sends.

#include "tests/support/Rsyslog.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

class SyslogDaemonTest : public testing::Test {
 protected:
  void SetUp() override {
    const std::string missing = Rsyslog::missing(Rsyslog::UDP);
    if (!missing.empty()) GTEST_SKIP() << missing;
    ASSERT_TRUE(daemon.startAndWait());
    appender.setSyslogHost(ownAddress().c_str());
    appender.setLayout(&layout);
    appender.setFacility("local0");
    tree.getRootLogger()->addAppender(&appender);
  }

  LOGPatternLayout layout{"%m"};
  LOGSyslogAppender appender;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("shop");
  Rsyslog daemon{Rsyslog::UDP};
  InternalLog log;
};

TEST_F(SyslogDaemonTest, StoresEveryFacilityAndEveryKindOfText) {
  Texts expected;
  const auto send = [&](const char* facility, const std::string& text, const std::string& stored) {
    appender.setFacility(facility);
    logger->info(text.c_str());
    expected.push_back(stored);
  };
  for (int code = 0; code <= 184; code += 8) {
    const std::string name = LOGSyslogAppender::getFacilityString(code).toUtf8();
    if (!name.empty()) send(name.c_str(), "order 17", "<" + std::to_string(code) + ">order 17");
  }
  for (const std::size_t length : {1000u, 8000u, 65000u}) {
    send("local0", std::string(length, 'x') + "!", "<128>" + std::string(length, 'x') + "!");
  }
  send("local0", "caf\u00e9 cr\u00e8me 12", "<128>caf\u00e9 cr\u00e8me ");  // two letters, two bytes
  send("local0", "one\ntwo\tthree\x1b[0m", "<128>one#012two#011three#033[0m");
  send("local0", "%s <1> \\ \"'", "<128>%s <1> \\ \"'");
  EXPECT_EQ(expected, daemon.waitForLines(expected.size()));
  EXPECT_EQ("", log.text());
}

TEST_F(SyslogDaemonTest, ADaemonThatGoesAwayCostsNothingButWhatIsSentMeanwhile) {
  const Deadline deadline(100);
  int sent = 0;
  const auto logOne = [&] { logger->info(("event " + std::to_string(++sent)).c_str()); };
  const auto isStored = [&](int number) {
    const Texts& lines = daemon.lines();
    return std::find(lines.begin(), lines.end(), "<128>event " + std::to_string(number)) != lines.end();
  };
  logOne();
  ASSERT_TRUE(eventually([&] { return isStored(1); }));

  daemon.kill();
  for (int i = 0; i < 999; ++i) logOne();
  ASSERT_TRUE(daemon.startAndWait());
  logOne();  // the first one after its return
  EXPECT_TRUE(eventually([&] { return isStored(1001); }));
  EXPECT_EQ(2u, daemon.lines().size());

  daemon.stop();  // its socket fills up, and the system drops what it has no room for
  const I18NString large(std::string_view(std::string(60000, 'x')));
  for (int i = 0; i < 1000; ++i) logger->info(large);
  daemon.resume();
  EXPECT_TRUE(eventually([&] {
    logOne();
    return isStored(sent - 1);
  }));
  // Unless the system refused to take a datagram, nothing was reported.
  EXPECT_EQ(log.count(""), log.count("log4vrk:ERROR LOGSyslogWriter::write --- Could not send data to the localhost"));
}

}  // namespace
