#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

constexpr char SETTINGS[] = "configuration/logdebug.ini";

/// The program beside a directory "configuration".
struct Probe : TempDir {
  explicit Probe(const char* settings) { write(SETTINGS, settings); }
  void run(const std::string& words) const {
    std::filesystem::create_directory(file("work"));
    const std::string program = "timeout 30 " LOG4VRK_TEST_PROGRAM_DIR "/internal_log_probe ";
    EXPECT_EQ(std::system(("cd " + file("work") + " && " + program + words + " > ../out").c_str()), 0) << words;
  }
  bool hasMadeNothing() const { return std::filesystem::is_empty(file("work")); }
};

}  // namespace

TEST(LOGLogLog, WritesWhereTheSettingsFileSaysWhateverItsSwitch) {
  const std::string CAUSE = " VRKThrowable: cause, at Place:7\n";
  const std::string LINES = "log4vrk: debug\nlog4vrk:WARN Gr\xC3\xBC\xC3\x9F\nlog4vrk:ERROR error\nlog4vrk: debug" +
                            CAUSE + "log4vrk:WARN ends in a blank" + CAUSE + "log4vrk:ERROR error" + CAUSE +
                            "log4vrk:ERROR" + CAUSE;
  const std::tuple<const char*, const char*, const char*> CASES[] = {
      {"", "work/log4vrk.log", "00"},
      {"1", "work/log4vrk.log", "10"},
      {"0\n", "work/log4vrk.log", "00"},
      {"01 other.log", "work/other.log", "00"},
      {"\n\t1 \v\n ../internal.log\fignored words\n", "internal.log", "10"},
      {"log4vrk.debug=1 log4vrk.configDebug=x", "work/log4vrk.configDebug=x", "00"}};
  for (const auto& [settings, log, flags] : CASES) {
    const Probe probe(settings);
    probe.write(log, "of the process before\n");
    probe.run("levels");
    EXPECT_EQ(probe.read(log), LINES) << settings;
    probe.run("quiet init");
    EXPECT_EQ(probe.read("out"), flags) << settings;
    EXPECT_EQ(probe.read(log), "") << "afresh with each process";
  }
}

TEST(LOGLogLog, StaysOffWithoutSettingsThatCanBeFollowed) {
  for (const char* settings : {"1 missing/internal.log", "1 ..", "1 /dev/null/x", "no file", "a directory"}) {
    const Probe probe(settings);
    if (settings[0] != '1') std::filesystem::remove(probe.file(SETTINGS));
    if (settings[0] == 'a') std::filesystem::create_directory(probe.file(SETTINGS));
    probe.run("levels");
    EXPECT_TRUE(probe.hasMadeNothing()) << settings;
  }
}

TEST(LOGLogLog, EndsWithAShutdownOrAFailureForGood) {
  const Probe probe("1");
  for (const char* words : {"fault debug levels", "shutdown levels"}) {
    probe.run(words);
    EXPECT_TRUE(probe.hasMadeNothing()) << words;
  }
  probe.run("quiet off debug shutdown levels init levels");
  EXPECT_EQ(probe.read("work/log4vrk.log"), "log4vrk: debug\n") << "whatever the flags say";
}

TEST(LOGLogLog, LinesOfManyThreadsAreWhole) {
  const Probe probe("1");
  probe.run("threads");
  std::vector<std::string> lines = linesOf(probe.file("work/log4vrk.log"));
  for (std::string& line : lines) line.erase(0, std::string("log4vrk: ").size());
  expectEachOnceInOrder(lines, 4, 500);
}
