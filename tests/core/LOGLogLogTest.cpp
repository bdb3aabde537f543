#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "log4vrk/core/LOGLogLog.h"
#include "tests/support/Logs.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace {

using vrktest::TempDir;

constexpr char SETTINGS[] = "configuration/logdebug.ini";
const std::string LEVELS =
    "log4vrk: debug\nlog4vrk:WARN Gr\xC3\xBC\xC3\x9F\nlog4vrk:ERROR error\nlog4vrk:ERROR narrow\n"
    "log4vrk: debug VRKThrowable: cause, at Place:7\nlog4vrk:WARN ends in a blank VRKThrowable: cause, at Place:7\n"
    "log4vrk:ERROR error VRKThrowable: cause, at Place:7\nlog4vrk:ERROR narrow VRKThrowable: cause, at Place:7\n"
    "log4vrk:ERROR VRKThrowable: cause, at Place:7\n";

/// Runs the program in the directory "work" beside "configuration".
void probe(const TempDir& dir, const std::string& what) {
  dir.write("work/marker", "");
  const int status = vrktest::statusOfProgram(
      {"/bin/sh", "-c", "\"$0\" \"$1\" > ../out", LOG4VRK_TEST_PROGRAM_DIR "/internal_log_probe", what},
      dir.file("work"));
  EXPECT_EQ(status, 0) << what;
}

bool nothingWasMade(const TempDir& dir) {
  const std::filesystem::directory_iterator files(dir.file("work"));
  return std::distance(files, std::filesystem::directory_iterator()) == 1;
}

}  // namespace

TEST(LOGLogLog, WritesWhereTheSettingsFileSaysWhateverItsSwitch) {
  const struct {
    const char *settings, *log;
  } CASES[] = {{"", "work/log4vrk.log"},
               {"1", "work/log4vrk.log"},
               {"0\n", "work/log4vrk.log"},
               {"1 other.log", "work/other.log"},
               {"\n\t0 \n ../internal.log ignored words\n", "internal.log"},
               {"log4vrk.debug=1 log4vrk.configDebug=x", "work/log4vrk.configDebug=x"}};
  for (const auto& c : CASES) {
    for (const bool exists : {false, true}) {
      const TempDir dir;
      dir.write(SETTINGS, c.settings);
      if (exists) dir.write(c.log, "of the process before\n");
      probe(dir, "levels");
      EXPECT_EQ(dir.read(c.log), LEVELS) << c.settings;
    }
  }
}

TEST(LOGLogLog, StaysOffWithoutSettingsThatCanBeFollowed) {
  const TempDir none;
  probe(none, "levels");
  EXPECT_TRUE(nothingWasMade(none));
  for (const char* path : {"missing/internal.log", "..", "/dev/null/x"}) {
    const TempDir dir;
    dir.write(SETTINGS, std::string("1 ") + path);
    probe(dir, "levels");
    EXPECT_TRUE(nothingWasMade(dir)) << path;
  }
}

TEST(LOGLogLog, StaysOffWhenTheSettingsCannotBeRead) {
  const TempDir dir;
  std::filesystem::create_directories(dir.file(SETTINGS));
  probe(dir, "levels");
  EXPECT_TRUE(nothingWasMade(dir));
}

TEST(LOGLogLog, AFailureWhileItOpensEndsThere) {
  const TempDir dir;
  dir.write(SETTINGS, "1");
  probe(dir, "fault");
  EXPECT_TRUE(nothingWasMade(dir));
}

TEST(LOGLogLog, EndsWithItsShutdownForGood) {
  const TempDir dir;
  dir.write(SETTINGS, "1");
  probe(dir, "shutdown");
  EXPECT_EQ(dir.read("work/log4vrk.log"), "log4vrk: before\n");
  const TempDir first;
  first.write(SETTINGS, "1");
  probe(first, "shutdown-first");
  EXPECT_TRUE(nothingWasMade(first));
}

TEST(LOGLogLog, TakesTheSwitchFromTheFirstWordAndNeverQuietMode) {
  for (const auto& [settings, flags] :
       {std::pair("1", "1001\n"), {"true", "0001\n"}, {"01", "0001\n"}, {"", "0001\n"}}) {
    const TempDir dir;
    dir.write(SETTINGS, settings);
    probe(dir, "flags");
    EXPECT_EQ(dir.read("out"), flags) << settings;
    EXPECT_EQ(dir.read("work/log4vrk.log"), "log4vrk: written whatever the flags say\n");
  }
}

TEST(LOGLogLog, LinesOfManyThreadsAreWhole) {
  const TempDir dir;
  dir.write(SETTINGS, "1");
  probe(dir, "threads");
  std::vector<std::string> lines = vrktest::linesOf(dir.file("work/log4vrk.log"));
  for (std::string& line : lines) line.erase(0, std::string("log4vrk: ").size());
  vrktest::expectEachOnceInOrder(lines, 4, 500);
}
