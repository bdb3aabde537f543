// That a real syslog daemon stores what the syslog appender sends.

#include "tests/support/Rsyslog.h"
#include "tests/support/Tests.h"

using namespace vrktest;

TEST(SyslogDaemonTest, StoresWhatIsSentAndGoingAwayCostsNothingButWhatIsSentMeanwhile) {
  const std::string missing = Rsyslog::missing(Rsyslog::UDP);
  if (!missing.empty()) GTEST_SKIP() << missing;
  const Deadline deadline(100);
  Rsyslog daemon(Rsyslog::UDP);
  ASSERT_TRUE(daemon.startAndWait());
  LOGPatternLayout layout("%m");
  LOGSyslogAppender appender;
  appender.setSyslogHost(ownAddress().c_str());
  appender.setLayout(&layout);
  appender.setFacility("local0");
  Tree tree;
  LOGLogger* const logger = tree.getLogger("shop");
  logger->addAppender(&appender);
  const InternalLog log;
  const std::string large(60000, 'x');
  logger->info(large);
  logger->info("one\ntwo\tthree\x1b[0m");
  EXPECT_EQ((Texts{"<128>" + large, "<128>one#012two#011three#033[0m"}), daemon.waitForLines(2));

  int sent = 0;
  const auto logOne = [&] { logger->info(("event " + std::to_string(++sent)).c_str()); };
  const auto isStored = [&](int number) {
    const Texts& lines = daemon.lines();
    return std::find(lines.begin(), lines.end(), "<128>event " + std::to_string(number)) != lines.end();
  };
  daemon.kill();
  for (int i = 0; i < 999; ++i) logOne();
  ASSERT_TRUE(daemon.startAndWait());
  logOne();  // the first one after its return
  EXPECT_TRUE(eventually([&] { return isStored(1000); }));
  EXPECT_EQ(3u, daemon.lines().size());

  daemon.stop();  // its socket fills up, and the system drops what it has no room for
  for (int i = 0; i < 1000; ++i) logger->info(large);
  daemon.resume();
  EXPECT_TRUE(eventually([&] {
    logOne();
    return isStored(sent - 1);
  }));
  // Unless the system refused to take a datagram, nothing was reported.
  EXPECT_EQ(log.count(""), log.count("log4vrk:ERROR LOGSyslogWriter::write --- Could not send data to the localhost"));
}
