// Programs under load: with loggers that share a file directly and through a queue, killed, and forked.

#pragma once

#include <atomic>
#include <map>
#include <random>
#include <string>
#include <thread>

#include "tests/support/Logs.h"
#include "tests/support/Process.h"
#include "tests/support/Threads.h"

namespace vrktest {

// Which logger has which appender: "file", of that class, or "async" before it.
using References = std::map<std::string, std::string>;

inline std::string loadDocument(const TempDir& dir, Way way, const References& references,
                                const std::string& fileClass = "RollingFileAppender", long fileSize = 1000000) {
  std::string document = R"(<log4j:configuration>
    <appender name="file" class="@CLASS@">
      <param name="File" value="@DIR@/all.log"/>
      <param name="MaximumFileSize" value="@SIZE@"/>
      <param name="MaxBackupIndex" value="1000"/>
      @LAYOUT@
    </appender>
    <appender name="async" class="AsyncAppender">
      <param name="BufferSize" value="512"/><appender-ref ref="file"/></appender>
    <logger name="load.inner"><level value="inherited"/></logger>)";
  for (const auto& [logger, appender] : references) {
    document += replaced("<logger name='@'><level value='INFO'/>", "@", logger);
    document += replaced("<appender-ref ref='@'/></logger>", "@", appender);
  }
  document = replaced(replaced(document, "@CLASS@", fileClass), "@SIZE@", std::to_string(fileSize));
  document = replaced(document, "@LAYOUT@", layoutOf(way));
  return dir.write("log.xml", replaced(document, "@DIR@", dir.path()) + "</log4j:configuration>");
}

inline void logNumbers(const std::string& loggerName, Way way, int writer, long count) {
  LOGLogger* const logger = LOGManager::getLogger(loggerName.c_str());
  for (long n = 1; n <= count; ++n) logNumber(logger, way, writer, n);
}

/// Kills so many programs at random moments while they log. Every event whose log call had returned is in the file,
/// whole. Returns how many that were.
inline long killWhileLogging(Way way, int kills) {
  const TempDir dir;
  const std::string document = fileDocument(dir, way);
  auto& returned = sharedWithChildren<std::atomic<long>>();
  std::mt19937 random(20261121);
  long found = 0;
  const auto killOne = [&] {
    dir.write("all.log", "");
    returned = 0;
    const pid_t child = startChild([&] {
      LOG4VRKConfigurator::initialize(document.c_str());
      LOGLogger* const logger = LOGManager::getLogger("process");
      for (long n = 1;; ++n) {
        logNumber(logger, way, 0, n);
        returned = n;
      }
    });
    ASSERT_TRUE(eventually([&] { return returned > 0; }));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
    ::kill(child, SIGKILL);
    ASSERT_EQ(-SIGKILL, statusOf(child)) << "the program ended by itself";
    std::vector<std::string> lines = linesOf(dir.file("all.log"));
    // The kernel ends a write of a killed process at the end of a page.
    if (!lines.empty() && dir.read("all.log").back() != '\n') lines.pop_back();
    ASSERT_GE(static_cast<long>(lines.size()), returned);
    expectEachOnceInOrder(lines, 1, static_cast<long>(lines.size()));
    found += returned;
  };
  for (int kill = 0; kill < kills && !testing::Test::HasFailure(); ++kill) killOne();
  return found;
}

/// Forks so many children, one after the other, while four threads of the parent log into a queue. The children log
/// and shut down; nobody loses or repeats anything. Returns how many events the parent logged.
inline long forkWhileThreadsLog(Way way, int children) {
  constexpr int THREADS = 4, FOR_EACH_CHILD = 10;
  const TempDir dir;
  EXPECT_EQ(1, LOG4VRKConfigurator::initialize(loadDocument(dir, way, {{"load", "async"}}, "FileAppender").c_str()));
  LOGLogger* const logger = LOGManager::getLogger("load");
  std::atomic<int> forked{0};
  std::atomic<bool> done{false};
  long counts[THREADS] = {};
  std::thread forking([&] {
    for (int child = 0; child < children && !testing::Test::HasFailure(); ++child, ++forked) {
      const auto log = [&] {
        logNumbers("load", way, 100 + child, 2);
        LOG4VRKConfigurator::shutdown();
      };
      EXPECT_EQ(0, statusInChild(log, 10)) << "child " << child;
    }
    done = true;
  });
  // A burst around each fork.
  onThreads(THREADS, [&](int t) {
    while (!done) {
      if (counts[t] < FOR_EACH_CHILD * (forked + 1)) {
        logNumber(logger, way, t, ++counts[t]);
      } else {
        std::this_thread::yield();
      }
    }
  });
  forking.join();
  LOG4VRKConfigurator::shutdown();
  std::map<int, long> last;
  lastNumbers(linesWithBackups(dir.file("all.log")), last);
  long logged = 0;
  for (int t = 0; t < THREADS; ++t) {
    EXPECT_EQ(counts[t], last[t]);
    logged += counts[t];
  }
  for (int child = 0; child < forked; ++child) EXPECT_EQ(2, last[100 + child]) << "child " << child;
  return logged;
}

}  // namespace vrktest
