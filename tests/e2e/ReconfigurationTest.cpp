#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

constexpr int THREADS = 8;
constexpr long EACH = 20000;
constexpr int RUNS = 100;

class CountingAppender : public LOGAppenderSkeleton {
 public:
  void append(LOGLoggingEvent*) override { ++count; }
  std::atomic<long> count{0};
};

TEST(Reconfiguration, LosesAndRepeatsNothingWhileThreadsLog) {
  const TempDir dir;
  const std::string document = dir.write("log.xml", R"(<log4j:configuration>
    <appender name="file" class="RollingFileAppender">
      <param name="File" value=")" + dir.file("all.log") +
                                                        R"("/>
      <param name="MaximumFileSize" value="50000"/>
      <param name="MaxBackupIndex" value="1000"/>
      <layout class="SimpleLayout"/>
    </appender>
    <logger name="load"><level value="INFO"/><appender-ref ref="file"/></logger>
    <logger name="load.inner"><level value="inherited"/></logger>
  </log4j:configuration>)");
  ASSERT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));

  std::vector<std::thread> threads;
  std::atomic<int> running{THREADS};
  for (int t = 0; t < THREADS; ++t) {
    threads.emplace_back([t, &running] {
      LOGLogger* const logger = LOGManager::getLogger(t % 2 == 0 ? "load" : "load.inner.most");
      for (long n = 1; n <= EACH; ++n) LOG4VRK_ERROR(logger, t << " " << n << " end");
      --running;
    });
  }

  LOGLogger* const logger = LOGManager::getLogger("load");
  CountingAppender appender;
  appender.setName("counting");
  LOGLevel* const levels[] = {LOGLevel::DEBUG_OBJ, LOGLevel::ERROR_OBJ, LOGLevel::WARN_OBJ, LOGLevel::ALL_OBJ};
  int runs = 0;
  while (runs < RUNS || running > 0) {
    logger->addAppender(&appender);
    logger->setLevel(levels[runs % 4]);
    LOGManager::getLogger("load.inner")->setLevel(runs % 3 == 0 ? nullptr : levels[runs % 4]);
    logger->removeAppender(&appender);
    if (runs < RUNS) {
      EXPECT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
    }
    ++runs;
  }
  for (std::thread& thread : threads) thread.join();
  expectEachOnceInOrder(linesWithBackups(dir.file("all.log")), THREADS, EACH);
  EXPECT_EQ(nullptr, logger->getAppender("counting"));
}

}  // namespace
