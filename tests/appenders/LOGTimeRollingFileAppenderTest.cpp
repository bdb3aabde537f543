#include <sys/file.h>

#include "log4vrk/appenders/internal/LOGFileHistory.h"
#include "tests/appenders/AppenderFixture.h"
#include "tests/support/Compressed.h"

using namespace vrktest;

namespace {

using Files = std::map<std::string, std::string>;  // what follows "log" in the name, and the lines without their ends
using Shared = std::atomic<long>;

constexpr long HOUR = 3600, DAY = 24 * HOUR;
constexpr int LONGEST = 60;        // seconds; the thread that compresses comes last on a busy machine
constexpr long NOON = 1919332800;  // 2030-10-27 12:00 UTC; that day the clocks of Berlin were set back at 01:00

class TimeRollingFileAppenderTest : public AppenderFixture {
 protected:
  /// As a program has it, by hours of UTC.
  struct Log : LOGTimeRollingFileAppender {
    Log(LOGLayout* layout, const I18NString& file, const char* interval = "hour") {
      setLayout(layout);
      setTimeZone("UTC");
      setInterval(interval);
      setFile(file);
    }
    ~Log() override { Log::close(); }
    void at(long seconds, const std::string& text) {
      TestEvent event(text);
      event.setTimeStamp(seconds, 0);
      activateOptions();
      doAppend(&event);
    }
  };

  /// The names of the files of that log.
  Texts names(const std::string& log = "log") const {
    Texts found;
    for (const std::string& name : namesIn(m_dir.path())) {
      if (name.rfind(log, 0) == 0 && name != log + ".lock") found.push_back(name);
    }
    return found;
  }
  Files files(const std::string& log = "log") const {
    Files found;
    for (const std::string& name : names(log)) {
      std::string& lines = found[name.substr(log.size())];
      for (const std::string& line : linesIn(contentOf(m_dir.file(name)))) lines += (lines.empty() ? "" : " ") + line;
    }
    return found;
  }
  /// Whether all finished files are compressed.
  bool isTidy(const std::string& log = "log", const std::string& ending = ".gz") const {
    const Texts all = names(log);
    return std::all_of(all.begin(), all.end(), [&](const std::string& name) {
      return name == log || std::filesystem::path(name).extension() == ending;
    });
  }
  /// How often each line is in all files. None of them is damaged, temporary, or there in two forms.
  std::map<std::string, int> lines() const {
    std::map<std::string, int> counts;
    std::set<std::string> stems;
    for (const std::string& name : names()) {
      const bool isCompressed = std::filesystem::path(name).extension() == ".gz";
      EXPECT_TRUE(stems.insert(isCompressed ? name.substr(0, name.size() - 3) : name).second) << name;
      EXPECT_EQ(name.npos, name.find(".tmp"));
      for (const std::string& line : linesIn(contentOf(m_dir.file(name)))) ++counts[line];
    }
    return counts;
  }
};

}  // namespace

TEST_F(TimeRollingFileAppenderTest, GivesEachPeriodAFileAndEntersNoneTwice) {
  Log log(&m_layout, path("log"));
  log.at(NOON, "a");
  log.at(NOON + HOUR - 1, "b");
  log.at(NOON + HOUR, "c");
  log.at(NOON - DAY, "the clock is set back");
  log.at(NOON + 5 * HOUR, "d");
  EXPECT_EQ(files(), (Files{{".2030-10-27T12", "a b"}, {".2030-10-27T13", "c the clock is set back"}, {"", "d"}}));
  log.setMaximumFileSize("4");
  for (const char* text : {"e", "f", "g", "h"}) log.at(NOON + 5 * HOUR, text);
  std::filesystem::create_symlink("nowhere", m_dir.file("log.2030-10-27T17.2"));
  log.at(NOON + 6 * HOUR, "i");
  log.at(std::numeric_limits<long>::max(), "the clock is mad");
  std::filesystem::remove(m_dir.file("log.2030-10-27T17.2"));
  EXPECT_EQ(files().size(), 8u);
  EXPECT_EQ(files()[".2030-10-27T17"] + "|" + files()[".2030-10-27T17.1"] + "|" + files()[".2030-10-27T17.3"],
            "d e|f g|h");
  EXPECT_EQ(m_log.text(), "");
}

TEST_F(TimeRollingFileAppenderTest, NamesTheHourThatComesTwiceTwice) {
  Log log(&m_layout, path("log"));
  log.setTimeZone("Europe/Berlin");
  for (long hour = 13; hour >= 9; --hour) log.at(NOON - hour * HOUR, std::to_string(hour));
  EXPECT_EQ(files(), (Files{{".2030-10-27T01", "13"},
                            {".2030-10-27T02", "12"},
                            {".2030-10-27T02.1", "11"},
                            {".2030-10-27T03", "10"},
                            {"", "9"}}));
}

TEST_F(TimeRollingFileAppenderTest, RollsFirstWhatAnEarlierStartHasLeft) {
  const auto modify = [&](long seconds) {
    const timespec times[] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, m_dir.file("log").c_str(), times, 0));
  };
  Log(&m_layout, path("log")).at(NOON, "of noon");
  modify(NOON + 2 * HOUR);  // by hand; the note counts
  m_dir.write("log.2030-10-27T12.3.gz", "not ours");
  Log(&m_layout, path("log")).at(NOON + 2 * HOUR, "later");
  EXPECT_EQ(m_dir.read("log.2030-10-27T12.4"), "of noon\n");
  Log(&m_layout, path("log")).at(NOON, "the clock is set back");
  std::filesystem::remove(m_dir.file("log.2030-10-27T12.3.gz"));
  std::filesystem::remove(m_dir.file("log.lock"));
  modify(NOON + 4 * HOUR);  // without a note, this does
  Log(&m_layout, path("log")).at(NOON + 5 * HOUR, "x");
  EXPECT_EQ(files(),
            (Files{{".2030-10-27T12.4", "of noon"}, {".2030-10-27T16", "later the clock is set back"}, {"", "x"}}));
}

TEST_F(TimeRollingFileAppenderTest, RemovesTheOldestBeyondEachLimitAndNothingElse) {
  const auto expectKept = [&](const char* what, LOGHistoryLimits limits, const std::set<std::string>& kept) {
    for (const std::string& name : namesIn(m_dir.path())) std::filesystem::remove(m_dir.file(name));
    const std::set<std::string> others = {"log",     "log.2030-10-27",    "log.2030-10-27T12.", "log.2030-10-27T12.01",
                                          "log.old", "log.2030-10-27T25", "log.2030-10-27T1",   "logs.2030-10-27T01"};
    for (const std::string& name : others) m_dir.write(name, "other");
    for (const char* name : {"T09", "T10.gz", "T11", "T11.2", "T11.10.zst"}) {
      m_dir.write(std::string("log.2030-10-27") + name, std::string(100, 'x'));
    }
    std::string problem;
    const LOGRollCalendar hours = LOGRollCalendar::make("hour", "", nullptr, problem);
    LOGFileHistory history(LOGRolledNames(m_dir.file("log"), hours), limits, std::nullopt);
    EXPECT_TRUE(history.tidy(NOON, [] { return false; }));
    std::set<std::string> left;
    for (const std::string& name : namesIn(m_dir.path())) {
      if (others.count(name) == 0) left.insert(name.substr(14));
    }
    EXPECT_EQ(left, kept) << what;
  };
  expectKept("all", {}, {"T09", "T10.gz", "T11", "T11.2", "T11.10.zst"});
  expectKept("files", {3, 0, 0}, {"T11", "T11.2", "T11.10.zst"});
  expectKept("age", {0, HOUR, 0}, {"T11", "T11.2", "T11.10.zst"});
  expectKept("age of another", {0, HOUR + 1, 0}, {"T10.gz", "T11", "T11.2", "T11.10.zst"});
  expectKept("bytes", {0, 0, 299}, {"T11.2", "T11.10.zst"});
  expectKept("the strictest", {4, DAY, 150}, {"T11.10.zst"});
}

TEST_F(TimeRollingFileAppenderTest, CompressesWhatIsFinishedAndKeepsItsTime) {
  for (const std::string format : {"zlib", "zstd"}) {
    const std::string ending = format == "zlib" ? ".gz" : ".zst", long_(300000, 'y');
    Log log(&m_layout, path(format));
    log.setCompress(format.c_str());
    log.setMaxHistory(2);
    log.at(NOON, "too old");
    log.at(NOON + HOUR, long_);
    log.at(NOON + 2 * HOUR, "b");
    log.at(NOON + 3 * HOUR, "c");
    const std::string first = m_dir.file(format + ".2030-10-27T12"), second = m_dir.file(format + ".2030-10-27T13");
    EXPECT_TRUE(eventually(
        [&] {
          return isTidy(format, ending) && !std::filesystem::exists(first) && !std::filesystem::exists(first + ending);
        },
        LONGEST));
    EXPECT_EQ(files(format), (Files{{".2030-10-27T13" + ending, long_}, {".2030-10-27T14" + ending, "b"}, {"", "c"}}));
    EXPECT_LT(std::filesystem::file_size(second + ending), 2000u);
  }
  EXPECT_EQ(m_log.text(), "");
}

TEST_F(TimeRollingFileAppenderTest, LeavesAloneWhatSomebodyWritesToAndTriesAgainWhatFailed) {
  std::string problem;
  const LOGRolledNames names(m_dir.file("log"), LOGRollCalendar::make("hour", "", nullptr, problem));
  const auto never = [] { return false; };
  m_dir.write("log.2030-10-27T10", "old");
  m_dir.write("log.2030-10-27T11", "new");
  LOGFileHistory history(names, {1, 0, 0}, VRKCompressor::GZIP);
  VRKFmFile writer;
  ASSERT_TRUE(writer.open(path("log.2030-10-27T10"), VRKFmFile::EXISTING) && writer.hold());
  const std::string temporary = m_dir.file("log.2030-10-27T11.gz.tmp");
  std::filesystem::create_directory(temporary);
  for (int i = 0; i < 2; ++i) EXPECT_FALSE(history.tidy(NOON, never));
  EXPECT_EQ(m_dir.read("log.2030-10-27T10") + m_dir.read("log.2030-10-27T11"), "oldnew");
  EXPECT_EQ(m_log.text(), "log4vrk:ERROR LOGTimeRollingFileAppender -- could not compress [" +
                              m_dir.file("log.2030-10-27T11") + "]: Is a directory\n");
  std::filesystem::remove(temporary);
  writer.close();
  EXPECT_TRUE(history.tidy(NOON, never));
  EXPECT_EQ(files(), (Files{{".2030-10-27T11.gz", "new"}}));
}

// Each point is passed with a plain, a compressed and no file behind it.
TEST_F(TimeRollingFileAppenderTest, IsWholeAgainAfterAKillAtEachStepOfARollAndACompression) {
  Shared& returned = sharedWithChildren<Shared>();
  long hour = 0;
  for (const auto point :
       {VRKFault::ROLL_RENAMED, VRKFault::ROLL_CREATED, VRKFault::COMPRESSION_WRITTEN, VRKFault::COMPRESSION_NAMED}) {
    for (int skip = 0; skip < 3; ++skip, hour = returned + 1) {
      EXPECT_EQ(-SIGKILL, statusInChild([&] {
        VRKFault::arm(point, 1, skip);
        Log log(&m_layout, path("log"));
        log.setCompress("zlib");
        for (;;) {
          log.at(NOON + hour * HOUR, std::to_string(hour));
          returned = hour++;
          std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
      })) << point;
    }
  }
  Log log(&m_layout, path("log"));
  log.setCompress("zlib");
  log.at(NOON + hour * HOUR, std::to_string(hour));
  EXPECT_TRUE(eventually([&] { return isTidy(); }, LONGEST));
  const auto counts = lines();
  for (long each = 0; each <= hour; ++each) {
    const auto found = counts.find(std::to_string(each));
    EXPECT_EQ(found != counts.end() ? found->second : 0, 1) << each;
  }
}

// By time, by size, and with a file that others compress as soon as nobody writes to it any more.
TEST_F(TimeRollingFileAppenderTest, ProcessesTakeTurnsAndHaveEachEventOnce) {
  constexpr int PROCESSES = 4, EVENTS = 1500;
  Log before(&m_layout, path("log"));  // goes on in a child of a fork, which it makes before it has a thread
  before.at(NOON, "before");
  std::vector<pid_t> children;
  for (int process = 0; process < PROCESSES; ++process) {
    children.push_back(startChild([&, process] {
      Log own(&m_layout, path("log"));
      Log& log = process == 0 ? before : own;
      log.setCompress("zlib");
      log.setMaximumFileSize("2kB");
      for (int n = 0; n < EVENTS; ++n) {
        log.at(NOON + n / 100 * HOUR, std::to_string(process) + " " + std::to_string(n) + std::string(20, '.'));
      }
      log.close();
    }));
  }
  for (const pid_t child : children) EXPECT_EQ(0, statusOf(child));
  before.setCompress("zlib");
  before.at(NOON + 20 * HOUR, "after");
  EXPECT_TRUE(eventually([&] { return isTidy(); }, LONGEST));
  const auto counts = lines();
  EXPECT_EQ(counts.size(), PROCESSES * EVENTS + 2u);
  for (const auto& [line, count] : counts) EXPECT_EQ(count, 1) << line;
  EXPECT_GT(files().size(), 15u);
}

TEST_F(TimeRollingFileAppenderTest, FollowsARenameBySignalByCallAndByItself) {
  static Log* s_log = nullptr;
  Log log(&m_layout, path("log"), "day");
  s_log = &log;
  log.at(NOON, "a");
  const auto rename = [&](const char* to) { std::filesystem::rename(m_dir.file("log"), m_dir.file(to)); };
  rename("log-1");
  log.at(NOON, "b");
  std::signal(SIGHUP, [](int) { s_log->requestReopen(); });
  std::raise(SIGHUP);
  log.at(NOON, "c");
  rename("log-2");
  log.reopen();
  log.at(NOON, "d");
  rename("log-3");
  log.at(NOON + 1, "e");
  EXPECT_EQ(files(), (Files{{"-1", "a b"}, {"-2", "c"}, {"-3", "d"}, {"", "e"}}));
  std::signal(SIGHUP, SIG_DFL);
}

TEST_F(TimeRollingFileAppenderTest, GoesOnInTheFileWhileItCannotRollAndSaysSoOnce) {
  Log log(&m_layout, path("log"));
  log.at(NOON, "a");
  VRKFault::arm(VRKFault::FILE_RENAME, 2);
  log.at(NOON + HOUR, "b");
  log.at(NOON + HOUR, "c");
  log.at(NOON + HOUR + 1, "d");
  log.at(NOON + HOUR + 2, "e");
  EXPECT_EQ(files(), (Files{{".2030-10-27T12", "a b c d"}, {"", "e"}}));
  EXPECT_EQ(m_log.text(), "log4vrk:ERROR LOGTimeRollingFileAppender -- could not rename [" + m_dir.file("log") +
                              "] to [" + m_dir.file("log.2030-10-27T12") + "]: Permission denied\n");
  // Another process has its turn, and hangs.
  const int turn = ::open(m_dir.file("log.lock").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(0, ::flock(turn, LOCK_EX));
  log.at(NOON + 2 * HOUR, "f");
  log.at(NOON + 2 * HOUR + 5, "g");
  ::close(turn);
  log.at(NOON + 2 * HOUR + 10, "h");
  EXPECT_EQ(files()[".2030-10-27T13"], "e f g");
  EXPECT_EQ(m_log.count("could not lock"), 1) << m_log.text();
}

TEST_F(TimeRollingFileAppenderTest, AFullDiskTakesNoFinishedFileAway) {
  m_dir.write("log.2030-10-27T01", "1");
  m_dir.write("log.2030-10-27T02", "2");
  std::filesystem::create_symlink("/dev/full", m_dir.file("log"));
  Log log(&m_layout, path("log"));
  log.setMaxHistory(2);
  log.setMaximumFileSize("10");
  for (int n = 0; n < 50; ++n) log.at(NOON + n * HOUR / 4, "an event that is lost");
  log.close();
  EXPECT_EQ(m_log.count("LOGCountingQuietWriter::write -- VRKThrowable exception occurred"), 50);
  std::filesystem::remove(m_dir.file("log"));
  EXPECT_EQ(files(), (Files{{".2030-10-27T01", "1"}, {".2030-10-27T02", "2"}}));
}

TEST_F(TimeRollingFileAppenderTest, KeepsALinkToTheFileAndTouchesNothingElse) {
  m_dir.write("taken", "mine");
  std::filesystem::create_symlink("nowhere", m_dir.file("link"));
  for (const char* name : {"link", "taken"}) {
    Log log(&m_layout, path("log"));
    log.setLink(path(name));
    log.at(NOON, "a");
  }
  EXPECT_EQ(m_dir.read("link"), "a\na\n");
  EXPECT_EQ(m_dir.read("taken"), "mine");
  EXPECT_EQ(m_log.count("could not make the link [" + m_dir.file("taken") + "]: File exists"), 1);
}

// By the fast path, with lines that are held back for one write. A program may be killed before it has logged all.
TEST_F(TimeRollingFileAppenderTest, HasEachEventOnceBehindADurableQueueThatIsKilledAtARoll) {
  constexpr long EACH = 20;
  Shared& returned = sharedWithChildren<Shared>();
  const auto run = [&](long from, long to) {
    LOGPatternLayout layout("%m%n");
    LOGTimeRollingFileAppender file;
    file.setLayout(&layout);
    file.setFile(path("log"));
    file.setMaximumFileSize("30");
    file.setCompress("zlib");
    LOGDurableAsyncAppender queue;
    queue.setName("rolling");
    queue.setDirectory(path("rings"));
    queue.setBufferSize(64);
    queue.addAppender(&file);
    Tree tree;
    LOGLogger* const logger = tree.getLogger("a");
    logger->addAppender(&queue);
    for (long n = from; n <= to; ++n) {
      logNumber(logger, Way::FAST, 0, n);
      returned = n;
    }
    queue.close();
    EXPECT_TRUE(eventually([&] { return isTidy(); }, LONGEST));
    logger->removeAllAppenders();
  };
  std::vector<long> last;  // of each program
  for (const auto point : {VRKFault::ROLL_RENAMED, VRKFault::ROLL_CREATED, VRKFault::QUEUE_ANNOUNCED,
                           VRKFault::QUEUE_WRITTEN, VRKFault::QUEUE_SETTLED, VRKFault::COMPRESSION_NAMED}) {
    const long first = EACH * static_cast<long>(last.size()) + 1;
    returned = first - 1;
    EXPECT_EQ(-SIGKILL, statusInChild([&] {
      VRKFault::arm(point, 1, point == VRKFault::COMPRESSION_NAMED ? 0 : 1);
      run(first, first + EACH - 1);
      eventually([] { return false; });
    })) << point;
    last.push_back(returned);
  }
  const long end = EACH * static_cast<long>(last.size()) + 1;
  run(end, end);
  last.push_back(end);
  auto counts = lines();
  for (long n = 1; n <= end; ++n) {
    const int count = counts["0 " + std::to_string(n) + " end"];
    EXPECT_LE(count, 1) << n;
    if (n <= last[static_cast<std::size_t>((n - 1) / EACH)]) {
      EXPECT_EQ(count, 1) << n;
    }
  }
}
