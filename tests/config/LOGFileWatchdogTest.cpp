#include <fcntl.h>
#include <sys/stat.h>

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

void setTime(const std::string& path, long seconds) {
  const timespec times[2] = {{seconds, 0}, {seconds, 0}};
  ASSERT_EQ(0, ::utimensat(AT_FDCWD, path.c_str(), times, 0));
}

class CountingWatchdog : public LOGFileWatchdog {
 public:
  explicit CountingWatchdog(const std::string& file) : LOGFileWatchdog(file.c_str()) {}
  ~CountingWatchdog() override { stop(); }

  void doOnChange() override {
    ++changes;
    if (const auto reaction = onChange) reaction();
  }

  std::atomic<int> changes{0};
  std::function<void()> onChange;
};

TEST(LOGFileWatchdogTest, ReactsToANewerFileOnlyAndStopsWhenItIsDeleted) {
  TempDir dir;
  const std::string file = dir.write("watched", "");
  setTime(file, 1000);
  CountingWatchdog watchdog(file);
  EXPECT_EQ(0, watchdog.changes) << "the reaction to the first look waits for the first poll";
  LOGFileWatchdog::setDelay(0);
  watchdog.start();
  EXPECT_TRUE(eventually([&] { return watchdog.changes == 1; }));
  setTime(file, 500);
  setTime(file, 2000);
  EXPECT_TRUE(eventually([&] { return watchdog.changes == 2; }));
  setTime(file, 1500);
  watchdog.checkAndConfigure();
  EXPECT_EQ(2, watchdog.changes);
}

TEST(LOGFileWatchdogTest, AMissingFileEndsThePollingWithOneWarning) {
  TempDir dir;
  InternalLog log;
  CountingWatchdog watchdog(dir.file("missing"));
  watchdog.start();
  watchdog.join();
  EXPECT_EQ("log4vrk:WARN Was not allowed to read check file existance, file:[" + dir.file("missing") + "].\n",
            log.text());
}

TEST(LOGFileWatchdogTest, MayBeDeletedByItsOwnReaction) {
  TempDir dir;
  const std::string file = dir.write("watched", "");
  std::atomic<bool> deleted{false};
  auto* const watchdog = new CountingWatchdog(file);
  watchdog->onChange = [&] {
    delete watchdog;
    deleted = true;
  };
  LOGFileWatchdog::setDelay(1);
  watchdog->start();
  EXPECT_TRUE(eventually([&] { return deleted.load(); }));
}

TEST(LOGXMLWatchdogTest, ConfiguresAtOnceAndAfterEachChange) {
  TempDir dir;
  const auto document = [](const char* level) {
    return "<log4j:configuration><logger name='dog'><level value='" + std::string(level) +
           "'/></logger></log4j:configuration>";
  };
  const std::string file = dir.write("log.xml", document("WARN"));
  setTime(file, 1000);
  LOGXMLWatchdog watchdog(file.c_str());
  LOGLogger* const logger = LOGManager::getLogger("dog");
  EXPECT_EQ(30000, logger->getChainedLevel()->toInt());
  LOGFileWatchdog::setDelay(1);
  watchdog.start();
  dir.write("log.xml", document("ERROR"));
  setTime(file, 2000);
  EXPECT_TRUE(eventually([&] { return logger->getChainedLevel()->toInt() == 40000; }));
}

}  // namespace
