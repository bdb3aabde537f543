// What a program and its operator do to the log files of a process: rotation, removal, links, signals, and ends.

#include "tests/support/Load.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

using Rotation = BothWays;
LOG4VRK_ON_BOTH_WAYS(Rotation);

void configure(const TempDir& dir, const std::string& fileClass, const std::string& parameters) {
  ASSERT_EQ(1, LOG4VRKConfigurator::initialize(rootDocument(dir, Way::FAST, fileClass, parameters).c_str()));
}

void log(const std::string& text) { LOGManager::getLogger("surroundings")->info(text); }

// The end of a process that runs `body` under the signal's own action, or ignores it.
int endWith(int signal, bool ignored, const std::function<void()>& body) {
  return statusInChild([&] {
    std::signal(signal, ignored ? SIG_IGN : SIG_DFL);
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    body();
  });
}

}  // namespace

// As logrotate does without an option: it renames, and tells the program, which reads its document again.
TEST_P(Rotation, RenamingAndReadingAgainLosesNothing) {
  const TempDir dir;
  const std::string document = fileDocument(dir, GetParam());
  ASSERT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
  long counts[2] = {};
  {
    const auto log = [&counts](int t) { logNumber(LOGManager::getLogger("r"), GetParam(), t, ++counts[t]); };
    const Meanwhile meanwhile({[&] { log(0); }, [&] { log(1); }});
    for (int rotation = 20; rotation > 0; --rotation) {
      std::filesystem::rename(dir.file("all.log"), dir.file("all.log." + std::to_string(rotation)));
      ASSERT_EQ(1, LOG4VRKConfigurator::initialize(document.c_str()));
      const std::string fresh = dir.file("all.log");
      ASSERT_TRUE(eventually([&] { return std::filesystem::file_size(fresh) > 0; }));
    }
  }
  LOG4VRKConfigurator::shutdown();
  std::map<int, long> last;
  ASSERT_NO_FATAL_FAILURE(lastNumbers(linesWithBackups(dir.file("all.log")), last));
  for (int t = 0; t < 2; ++t) EXPECT_EQ(counts[t], last[t]);
}

// As logrotate's copytruncate does. What a rolling appender has counted stays.
TEST(LogFiles, CopyingAndTruncatingLeavesNoHole) {
  for (const std::string fileClass : {"FileAppender", "RollingFileAppender"}) {
    for (const std::string append : {"true", "false"}) {
      const TempDir dir;
      const std::string file = dir.file("log");
      configure(dir, fileClass,
                parameter("File", file) + parameter("Append", append) + parameter("MaximumFileSize", "18"));
      log("before");
      std::filesystem::copy_file(file, dir.file("copy"));
      std::filesystem::resize_file(file, 0);
      log("after");
      EXPECT_EQ(dir.read("copy") + dir.read("log"), "before\nafter\n") << fileClass << append;
      log("last");
      EXPECT_EQ(dir.read("log.1") + dir.read("log"), "after\nlast\n") << fileClass << append;
      EXPECT_EQ(dir.read("log"), fileClass == "FileAppender" ? "after\nlast\n" : "") << append;
      LOG4VRKConfigurator::shutdown();
    }
  }
}

TEST(LogFiles, ARemovedFileOrDirectoryTakesEventsUntilTheDocumentIsReadAgain) {
  const TempDir dir;
  const auto read = [&] { configure(dir, "FileAppender", parameter("File", dir.file("logs/log"))); };
  dir.write("logs/log", "");
  read();
  std::filesystem::remove(dir.file("logs/log"));
  log("lost");
  read();
  log("written");
  EXPECT_EQ(dir.read("logs/log"), "written\n");
  std::filesystem::remove_all(dir.file("logs"));
  log("lost");
  read();
  log("lost");
  std::filesystem::create_directory(dir.file("logs"));
  log("the directory is there");
  EXPECT_EQ(dir.read("logs/log"), "the directory is there\n");
  LOG4VRKConfigurator::shutdown();
}

TEST(LogFiles, LinksAreFollowedWhereTheyLeadSomewhereAndRenamedByARollover) {
  const TempDir dir;
  dir.write("target", "old\n");
  std::filesystem::create_symlink("target", dir.file("log"));
  configure(dir, "RollingFileAppender", parameter("File", dir.file("log")) + parameter("MaximumFileSize", "10"));
  log("through the link");
  log("new");
  EXPECT_EQ(dir.read("target"), "old\nthrough the link\n");
  EXPECT_TRUE(std::filesystem::is_symlink(dir.file("log.1")));
  EXPECT_EQ(dir.read("log"), "new\n");
  std::filesystem::create_symlink("missing", dir.file("dangling"));
  configure(dir, "FileAppender", parameter("File", dir.file("dangling")));
  log("lost");
  EXPECT_FALSE(std::filesystem::exists(dir.file("missing")));
  dir.write("missing", "");
  log("written");
  EXPECT_EQ(dir.read("missing"), "written\n");
  LOG4VRKConfigurator::shutdown();
}

// Which action a signal has is the program's decision: the library changes none.
TEST(Signals, OfALimitAndOfAPipeEndTheProcessOrLoseTheEvent) {
  for (const bool ignored : {false, true}) {
    const TempDir dir;
    const InternalLog internal;
    const auto limited = [&] {
      configure(dir, "FileAppender", parameter("File", dir.file("log")));
      rlimit before;
      ::getrlimit(RLIMIT_FSIZE, &before);
      const rlimit none{0, before.rlim_max};
      ::setrlimit(RLIMIT_FSIZE, &none);
      log("lost");
      ::setrlimit(RLIMIT_FSIZE, &before);
      log("written");
    };
    EXPECT_EQ(ignored ? 0 : -SIGXFSZ, endWith(SIGXFSZ, ignored, limited));
    EXPECT_EQ(dir.read("log"), ignored ? "written\n" : "");
    const auto nobodyReads = [&] {
      int ends[2];
      ASSERT_EQ(0, ::pipe(ends));
      ::dup2(ends[1], STDOUT_FILENO);
      ::close(ends[0]);
      configure(dir, "ConsoleAppender", "");
      log("lost");
    };
    EXPECT_EQ(ignored ? 0 : -SIGPIPE, endWith(SIGPIPE, ignored, nobodyReads));
    EXPECT_EQ(internal.contains("Broken pipe"), ignored);
  }
}

// Without a buffer an event is in the kernel however the process ends; with one, exit() is the only end that writes it.
TEST(Ends, OnlyExitWritesWhatIsBuffered) {
  const std::pair<const char*, void (*)()> ENDS[] = {{"exit", [] { std::exit(0); }},
                                                     {"_exit", [] { ::_exit(0); }},
                                                     {"quick_exit", [] { std::quick_exit(0); }},
                                                     {"SIGTERM", [] { ::raise(SIGTERM); }},
                                                     {"SIGKILL", [] { ::raise(SIGKILL); }}};
  for (const auto& [name, end] : ENDS) {
    for (const bool buffered : {false, true}) {
      const TempDir dir;
      statusInChild([&, endProcess = end] {
        LOGPatternLayout layout("%m%n");
        LOGFileAppender file(&layout, dir.file("log").c_str(), 1, buffered ? 1 : 0, 1000);
        LOGManager::getRootLogger()->addAppender(&file);
        log("an event");
        endProcess();
      });
      EXPECT_EQ(dir.read("log"), buffered && name != std::string("exit") ? "" : "an event\n") << name << buffered;
    }
  }
}

// daemon() goes to another directory, and everything that is opened later is seen from there.
TEST(Daemon, RelativeNamesAreSeenFromTheWorkingDirectoryUnlessThereIsABase) {
  for (const bool hasBase : {false, true}) {
    const TempDir dir;
    dir.write("elsewhere/other", "");
    const auto program = [&] {
      std::filesystem::current_path(dir.path());
      if (hasBase) VRKConfigurationFactory::getInstance().setBaseDirectory(dir.path().c_str());
      configure(dir, "RollingFileAppender", parameter("File", "log") + parameter("MaximumFileSize", "7"));
      log("1");
      ASSERT_EQ(0, ::daemon(1, 1));
      ::alarm(10);
      std::filesystem::current_path(dir.file("elsewhere"));
      log("2");
      log("rolls");
      log("3");
      dir.write("done", "");
    };
    EXPECT_EQ(0, statusInChild(program));
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(dir.file("done")); }));
    EXPECT_EQ(dir.read(hasBase ? "log.1" : "log"), "1\n2\nrolls\n");
    EXPECT_EQ(dir.read(hasBase ? "log" : "elsewhere/log"), "3\n");
  }
}
