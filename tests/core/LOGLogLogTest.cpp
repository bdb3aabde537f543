#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

constexpr char SETTINGS[] = "configuration/logdebug.ini";

/// The program beside a directory "configuration".
struct Probe : TempDir {
  explicit Probe(const char* settings) { write(SETTINGS, settings); }
  void run(const std::string& words, const std::string& environment = "-u LOG4VRK_INTERNAL_LOG",
           const std::string& program = LOG4VRK_TEST_PROGRAM_DIR "/internal_log_probe") const {
    std::filesystem::create_directory(file("work"));
    const std::string command = "cd '" + file("work") + "' && timeout 30 env " + environment + " '" + program + "' ";
    EXPECT_EQ(std::system((command + words + " > ../out 2> ../err").c_str()), 0) << words << read("err");
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
    EXPECT_EQ(probe.read("out") + probe.read(log), flags) << "afresh with each process: " << settings;
  }
  for (const char* settings : {"1 missing/internal.log", "1 ..", "1 /dev/null/x", "a directory"}) {
    const Probe probe(settings);
    if (settings[0] == 'a') std::filesystem::remove(probe.file(SETTINGS));
    if (settings[0] == 'a') std::filesystem::create_directory(probe.file(SETTINGS));
    probe.run("levels");
    EXPECT_TRUE(probe.hasMadeNothing()) << settings;
  }
}

TEST(LOGLogLog, IsSwitchedOnByTheEnvironment) {
  const std::string LINE = "log4vrk: debug\n";
  // Whether there are settings, the variable, and where the line goes, if anywhere.
  const std::tuple<bool, std::string, std::string> CASES[] = {
      {false, "stderr", "err"}, {false, "../internal.log", "internal.log"},
      {true, "stderr", "err"},  {true, "../internal.log", "internal.log"},
      {true, "", "other.log"},  {false, "missing/internal.log", ""},
      {false, "..", ""},        {false, "", ""}};
  for (const auto& [settings, variable, log] : CASES) {
    const Probe probe("1 ../other.log");
    if (!settings) std::filesystem::remove(probe.file(SETTINGS));
    for (const std::string& expected : {LINE, log == "internal.log" ? LINE + LINE : LINE}) {
      probe.run("debug shutdown debug", "LOG4VRK_INTERNAL_LOG=" + variable);
      EXPECT_TRUE(probe.hasMadeNothing() && probe.read("out") == (settings ? "10" : "00")) << variable;
      for (const std::string name : {"err", "internal.log", "other.log"}) {
        EXPECT_EQ(probe.read(name), log == name ? expected : "") << variable << ", " << name;
      }
    }
  }
}

TEST(LOGLogLog, IgnoresTheEnvironmentInSetUserIdPrograms) {
  if (::geteuid() != 0) GTEST_SKIP() << "making a set-user-id program of another user needs root";
  const Probe probe("");
  std::filesystem::remove(probe.file(SETTINGS));
  const std::string program = probe.file("probe");
  std::filesystem::copy_file(LOG4VRK_TEST_PROGRAM_DIR "/internal_log_probe", program);
  const std::string environment = "LOG4VRK_INTERNAL_LOG=stderr";
  probe.run("debug leave", environment, program);
  EXPECT_EQ(probe.read("err"), "log4vrk: debug\n");
  ASSERT_EQ(::chown(program.c_str(), 65534, 65534), 0);
  ASSERT_EQ(::chmod(program.c_str(), 04755), 0);
  probe.run("debug leave", environment, program);
  EXPECT_EQ(probe.read("err"), "");
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
