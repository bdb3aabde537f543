#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

void setTime(const std::string& path, long seconds) {
  const timespec times[2] = {{seconds, 0}, {seconds, 0}};
  ASSERT_EQ(0, ::utimensat(AT_FDCWD, path.c_str(), times, 0));
}

struct CountingWatchdog : LOGFileWatchdog {
  explicit CountingWatchdog(const std::string& file) : LOGFileWatchdog(file.c_str()) {}
  ~CountingWatchdog() override { stop(); }
  void doOnChange() override {
    ++changes;
    if (const auto reaction = onChange) reaction();
  }

  std::atomic<int> changes{0};
  std::function<void()> onChange;
};

struct LOGFileWatchdogTest : testing::Test {
  LOGFileWatchdogTest() {
    setTime(file, 1000);
    LOGFileWatchdog::setDelay(1);
  }

  const TempDir dir;
  const std::string file = dir.write("watched", "<log4j:configuration><logger name='dog'/></log4j:configuration>");
  const InternalLog log;
};

}  // namespace

TEST_F(LOGFileWatchdogTest, ReactsToANewerFileOnlyAndStopsWhenItIsDeleted) {
  CountingWatchdog watchdog(file);
  EXPECT_EQ(watchdog.changes, 0) << "the reaction to the first look waits for the first poll";
  watchdog.start();
  EXPECT_TRUE(eventually([&] { return watchdog.changes == 1; }));
  setTime(file, 500);
  setTime(file, 2000);
  EXPECT_TRUE(eventually([&] { return watchdog.changes == 2; }));
  setTime(file, 1500);
  watchdog.checkAndConfigure();
  EXPECT_EQ(watchdog.changes, 2);
}

TEST_F(LOGFileWatchdogTest, AMissingFileEndsThePollingWithOneWarning) {
  const std::string missing = dir.file("missing");
  CountingWatchdog watchdog(missing);
  watchdog.start();
  watchdog.join();
  EXPECT_EQ(log.text(), "log4vrk:WARN Was not allowed to read check file existance, file:[" + missing + "].\n");
}

TEST_F(LOGFileWatchdogTest, MayBeDeletedByItsOwnReaction) {
  std::atomic<bool> deleted{false};
  auto* const watchdog = new CountingWatchdog(file);
  watchdog->onChange = [&] {
    delete watchdog;
    deleted = true;
  };
  watchdog->start();
  EXPECT_TRUE(eventually([&] { return deleted.load(); }));
}

TEST_F(LOGFileWatchdogTest, OfADocumentConfiguresAtOnceAndAfterEachChange) {
  LOGXMLWatchdog watchdog(file.c_str());
  LOGLogger* const logger = LOGManager::exists("dog");
  ASSERT_NE(logger, nullptr);
  watchdog.start();
  dir.write("watched", "<log4j:configuration><logger name='dog'><level value='OFF'/></logger></log4j:configuration>");
  setTime(file, std::time(nullptr) + 1000);  // newer than the file was while it was being written
  EXPECT_TRUE(eventually([&] { return *logger->getChainedLevel() == *LOGLevel::OFF_OBJ; }));
}
