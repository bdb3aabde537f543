#include "log4vrk/appenders/internal/LOGRing.h"
#include "log4vrk/appenders/internal/LOGRingFormat.h"
#include "log4vrk/platform/internal/VRKLogTail.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

using Format = LOGRingFormat;

constexpr long EVENTS = 20;

// A queue before a file that rolls after four lines, as one program has them.
struct Program {
  explicit Program(const TempDir& dir, const std::string& log = "log", const char* pattern = "%m%n")
      : layout(pattern), file(&layout, dir.file(log).c_str()) {
    file.setMaximumFileSize(30);
    file.setMaxBackupIndex(100);
    queue.setName("durable");
    queue.setDirectory(dir.file("rings").c_str());
    queue.setBufferSize(64);
    queue.addAppender(&file);
    logger->addAppender(&queue);
  }
  ~Program() {
    queue.close();
    logger->removeAllAppenders();
  }
  void logAll(long from = 1, long to = EVENTS) {
    for (long n = from; n <= to; ++n) logNumber(logger, Way::FAST, 0, n);
  }

  LOGPatternLayout layout;
  LOGRollingFileAppender file;
  LOGDurableAsyncAppender queue;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a.b");
};

// Delivers nothing before it is let go.
struct Brake : HookFilter {
  Brake() : HookFilter([this] { return eventually([&] { return off.load(); }), m_NEUTRAL; }) {}
  std::atomic<bool> off{false};
};

// A program has all its events in the ring, begins to deliver and is killed at a point, which it may pass some times.
void killAt(const TempDir& dir, VRKFault::Point point, int skip = 0) {
  EXPECT_EQ(-SIGKILL, statusInChild([&] {
    Brake brake;
    Program program(dir);
    program.file.addFilter(&brake);
    program.logAll();
    VRKFault::arm(point, 1, skip);
    brake.off = true;
    eventually([] { return false; });
  }));
}

// The next start recovers what is left. What is in the log and its backups then.
std::vector<std::string> recovered(const TempDir& dir) {
  Program(dir).queue.activateOptions();
  return linesWithBackups(dir.file("log"));
}

// The file of the only ring.
std::string ringIn(const TempDir& dir) {
  const std::vector<std::string> names = namesIn(dir.file("rings"));
  EXPECT_EQ(1U, names.size());
  return names.empty() ? "" : "rings/" + names[0];
}

struct LOGDurableAsyncAppenderTest : testing::Test {
  const Deadline deadline{110};
  const TempDir dir;
  const InternalLog log;
};

}  // namespace

TEST(VRKLogTail, WritesWhatIsMissingAndNothingElse) {
  const struct {
    const char *before, *after;
    std::int64_t offset;
    VRKLogTail::Result result;
  } cases[] = {
      {"0\n", "0\n1\n2\n", 2, VRKLogTail::COMPLETED},        // nothing of it is there
      {"0\n1", "0\n1\n2\n", 2, VRKLogTail::COMPLETED},       // a part
      {"0\n1\n2\n", "0\n1\n2\n", 2, VRKLogTail::WAS_WHOLE},  // all
      {"0\n1\n2\n3\n", "0\n1\n2\n3\n", 2, VRKLogTail::WAS_WHOLE},
      {"0\n3\n1\n2\n", "0\n3\n1\n2\n", 2, VRKLogTail::WAS_WHOLE},  // somebody else came first
      {"", "1\n2\n", 2, VRKLogTail::COMPLETED},                    // it has been emptied
      {"0\n3", "0\n3\n1\n2\n", 2, VRKLogTail::REPEATED},           // something else is there
  };
  const TempDir dir;
  for (const auto& each : cases) {
    for (const bool isRenamed : {false, true}) {
      struct stat status;
      const std::string file = dir.write(isRenamed ? "log.1" : "log", each.before);
      ASSERT_EQ(0, ::stat(file.c_str(), &status));
      const VRKFileJournal::Place place = {status.st_dev, status.st_ino, each.offset};
      EXPECT_EQ(each.result, VRKLogTail::complete(dir.file("log"), place, "1\n2\n")) << each.before;
      EXPECT_EQ(each.after, dir.read(isRenamed ? "log.1" : "log"));
      std::filesystem::remove(file);
      EXPECT_FALSE(std::filesystem::exists(dir.file("log")));
    }
  }
  EXPECT_EQ(VRKLogTail::REPEATED, VRKLogTail::complete(dir.file("gone"), {1, 1, 0}, "1\n"));
  EXPECT_EQ("1\n", dir.read("gone"));
  EXPECT_EQ(VRKLogTail::FAILED, VRKLogTail::complete(dir.file("no/log"), {1, 1, 0}, "1\n"));
}

TEST_F(LOGDurableAsyncAppenderTest, HasEachEventOnceWhereverItIsKilled) {
  for (const auto& [point, most] : std::map<VRKFault::Point, int>{
           {VRKFault::QUEUE_ANNOUNCED, 4}, {VRKFault::QUEUE_WRITTEN, 4}, {VRKFault::QUEUE_SETTLED, 0}}) {
    for (int skip = 0; skip <= most; ++skip) {
      const TempDir own;
      killAt(own, point, skip);
      // The first that recovers is killed, too, when there is something to complete.
      statusInChild([&] {
        VRKFault::arm(VRKFault::QUEUE_RECOVERED);
        Program(own).queue.activateOptions();
      });
      expectEachOnceInOrder(recovered(own), 1, EVENTS);
      EXPECT_TRUE(namesIn(own.file("rings")).empty()) << point << " " << skip;
    }
  }
}

TEST_F(LOGDurableAsyncAppenderTest, KeepsAllThatCanBeReadOfADamagedFileAndSetsTheRestAside) {
  constexpr std::size_t TAIL = 2 * Format::PAGE, HEAD = TAIL + 64, LENGTH = TAIL + 128 + 16;
  constexpr std::size_t FOURTH = Format::SLOTS_AT + 3 * Format::SLOT, TENTH = Format::SLOTS_AT + 9 * Format::SLOT;
  constexpr std::size_t LONG_MESSAGE = TENTH + 8 + offsetof(Format::Record, messageLength) + 3;
  const struct {
    const char *what, *line, *ending;
    std::size_t at;     // where a byte is changed, or where the file is cut off
    int byte;           // -1: cut off
    std::size_t lines;  // that are recovered
  } cases[] = {
      {"foreign", "it is not the file of a queue", ".damaged", 0, 'x', 0},
      {"newer", "its version is 2, and this program knows 1", ".ring", offsetof(Format::Header, version), 2, 0},
      {"header", "its header is damaged", ".damaged", offsetof(Format::Header, units), 1, 0},
      {"empty", "it is not the file of a queue (0 bytes)", ".damaged", 0, -1, 0},
      {"no slots", "it is truncated to 8192 of ", ".damaged", 2 * Format::PAGE, -1, 0},
      {"three slots", "it is truncated to ", ".damaged", FOURTH, -1, 3},
      {"no outbox", "it is truncated to ", ".damaged", Format::outboxAt(64), -1, EVENTS},
      {"position", "its positions are damaged (head 72057594037927936, ", ".damaged", HEAD + 7, 1, 0},
      {"length", "what was about to be written is damaged (", ".damaged", LENGTH + 6, 1, EVENTS},
      {"record", "1 events are damaged", ".damaged", LONG_MESSAGE, 1, EVENTS - 1},
      {"mark", "", nullptr, TENTH + 7, 1, EVENTS - 1},  // as a killed thread leaves it
  };
  for (const auto& each : cases) {
    const TempDir own;
    const InternalLog lines;
    killAt(own, VRKFault::QUEUE_ANNOUNCED);
    const std::string ring = ringIn(own);
    std::string bytes = own.read(ring);
    each.byte < 0 ? bytes.resize(each.at) : static_cast<void>(bytes[each.at] = static_cast<char>(each.byte));
    own.write(ring, bytes);
    EXPECT_EQ(each.lines, recovered(own).size()) << each.what;
    EXPECT_TRUE(lines.contains(each.line)) << each.what << "\n" << lines.text();
    if (each.ending == nullptr) {
      EXPECT_TRUE(namesIn(own.file("rings")).empty());
    } else {
      const std::string left = ringIn(own);
      EXPECT_EQ(each.ending, std::filesystem::path(left).extension()) << each.what;
      EXPECT_LE(bytes.size(), own.read(left).size()) << each.what;
    }
  }
}

TEST_F(LOGDurableAsyncAppenderTest, BringsBackAllThatALayoutPrints) {
  const std::string text(20 * Format::SLOT, 'x'), by(2 * Format::SLOT, 'y');
  const auto logAll = [&](LOGLogger* logger) {
    LOGLevel own(35000, "OWN", 3);
    LOGObject message("object");
    LOG4VRK_WARN(logger, text);
    LOGNDC::push("a context");
    LOG4VRK_ERROR(logger, "\xc3\xa4");
    LOG4VRK_CONTEXT("order", 17, "by", by);
    LOG4VRK_INFO_KV(logger, "fields", "total", 17.5, "by", "anna");
    logger->log(&own, &message);
    HookMessage rendered("rendered");
    logger->info(&rendered);
  };
  EXPECT_EQ(-SIGKILL, statusInChild([&] {
    Brake brake;
    Program program(dir, "log", "%p %c %t %x %m|%X{order}|%X{by}|%X{total}%n");
    program.file.addFilter(&brake);
    dir.write("thread", std::to_string(VRKThread::currentThreadId()));
    logAll(program.logger);
    ::raise(SIGKILL);
  }));
  { Program(dir, "log", "%p %c %t %x %m|%X{order}|%X{by}|%X{total}%n").queue.activateOptions(); }
  const std::string thread = " a.b " + dir.read("thread") + " ";
  EXPECT_EQ((std::vector<std::string>{"WARN" + thread + " " + text + "|||", "ERROR" + thread + "a context \xc3\xa4|||",
                                      "INFO" + thread + "a context fields|17|anna|17.5",
                                      "OWN" + thread + "a context object|17|" + by + "|",
                                      "INFO" + thread + "a context rendered|17|" + by + "|"}),
            linesWithBackups(dir.file("log")));
}

TEST_F(LOGDurableAsyncAppenderTest, DeliversToTheOthersAtLeastOnceAndToTheFileOnce) {
  killAt(dir, VRKFault::QUEUE_SETTLED);
  RecordingAppender other;
  Program program(dir);
  program.queue.addAppender(&other);
  program.queue.activateOptions();
  program.queue.close();
  EXPECT_EQ(static_cast<std::size_t>(EVENTS), other.texts.size()) << "they had not been released";
  expectEachOnceInOrder(linesWithBackups(dir.file("log")), 1, EVENTS);
}

TEST_F(LOGDurableAsyncAppenderTest, TakesOnlyWhatIsItsOwnAndHasNoOwner) {
  killAt(dir, VRKFault::QUEUE_ANNOUNCED);
  { Program(dir, "other").queue.activateOptions(); }
  EXPECT_TRUE(log.contains("its events belong to another log file, " + dir.file("log"))) << log.text();
  auto& logged = sharedWithChildren<std::atomic<bool>>();
  const pid_t living = startChild([&] {
    Brake brake;
    Program program(dir);  // recovers the first before it logs, when it is let go
    program.file.addFilter(&brake);
    program.logAll(EVENTS + 1, 2 * EVENTS);
    logged = true;
    eventually([] { return false; });
  });
  ASSERT_TRUE(eventually([&] { return logged.load(); }));
  EXPECT_LE(recovered(dir).size(), static_cast<std::size_t>(EVENTS));
  EXPECT_EQ(0, ::kill(living, SIGKILL));
  statusOf(living);
  expectEachOnceInOrder(recovered(dir), 1, 2 * EVENTS);
  EXPECT_TRUE(namesIn(dir.file("rings")).empty());
}

TEST_F(LOGDurableAsyncAppenderTest, AForkedChildHasARingOfItsOwnAndKeepsNoneOfItsParent) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizers are not made for forks of several threads; the release build runs this";
#endif
  auto& idle = sharedWithChildren<std::atomic<pid_t>>();
  EXPECT_EQ(-SIGKILL, statusInChild([&] {
    Brake brake;
    Program program(dir);
    program.file.addFilter(&brake);
    program.queue.activateOptions();
    ASSERT_EQ(0, statusInChild([&] {
                brake.off = true;
                logNumber(program.logger, Way::FAST, 1, 1);
                EXPECT_EQ(2U, namesIn(dir.file("rings")).size());
                program.queue.close();
              }));
    startChild([&] {
      ::prctl(PR_SET_PDEATHSIG, 0);
      idle = ::getpid();
      eventually([] { return false; }, 60);
    });
    eventually([&] { return idle != 0; });
    program.logAll();
    ::raise(SIGKILL);
  }));
  const std::vector<std::string> lines = recovered(dir);
  ASSERT_GT(idle, 0);
  EXPECT_EQ(0, ::kill(idle, SIGKILL)) << "it has inherited the ring";
  EXPECT_TRUE(namesIn(dir.file("rings")).empty()) << log.text();
  EXPECT_EQ("1 1 end", lines.at(0));
  expectEachOnceInOrder({lines.begin() + 1, lines.end()}, 1, EVENTS);
}

TEST_F(LOGDurableAsyncAppenderTest, IsWhatADocumentSaysAndLosesNothingWhenThatIsReadAgain) {
  const std::string document =
      replaced("<log4j:configuration><appender name='file' class='FileAppender'><param name='File' value='@/log'/>" +
                   layoutOf(Way::FAST) +
                   "</appender><appender name='queue' class='DurableAsyncAppender'><param name='Name' value='A b/c'/>"
                   "<param name='BufferSize' value='100'/><param name='Directory' value='@/rings'/>"
                   "<appender-ref ref='file'/></appender><root><level value='INFO'/><appender-ref ref='queue'/></root>"
                   "</log4j:configuration>",
               "@", dir.path());
  const std::string path = dir.write("log.xml", document);
  LOGLogger* const logger = LOGManager::getLogger("a");
  for (long reading = 0; reading < 10; ++reading) {
    ASSERT_EQ(1, LOG4VRKConfigurator::initialize(path.c_str()));
    for (long n = 1; n <= 100; ++n) logNumber(logger, Way::FAST, 0, 100 * reading + n);
    const std::string ring = ringIn(dir);
    EXPECT_EQ(0U, ring.find("rings/A%20b%2fc-" + std::to_string(::getpid()) + "-"));
    EXPECT_EQ(LOGRing::bytesFor(128), dir.read(ring).size());
  }
  LOG4VRKConfigurator::shutdown();
  expectEachOnceInOrder(linesOf(dir.file("log")), 1, 1000);
  EXPECT_TRUE(namesIn(dir.file("rings")).empty());
}

TEST_F(LOGDurableAsyncAppenderTest, LogsWithoutAFileWhereItCannotHaveOneAndSaysWhy) {
  std::filesystem::create_directory(dir.file("real"));
  std::filesystem::create_symlink(dir.file("real"), dir.file("link"));
  std::filesystem::create_directory(dir.file("open"));
  std::filesystem::permissions(dir.file("open"), std::filesystem::perms::all);
  std::filesystem::create_directory(dir.file("theirs"));
  const bool isRoot = ::geteuid() == 0;
  if (isRoot) {
    ASSERT_EQ(0, ::chown(dir.file("theirs").c_str(), 12345, 12345));
  }
  dir.write("file", "");
  const std::string user = std::to_string(::geteuid());
  const std::map<std::string, std::string> cases = {
      {"link", "it is a symbolic link"},
      {"file", "it is no directory"},
      {"file/below", "Not a directory"},
      {"open", "others may write to it (mode 0777)"},
      {"theirs", isRoot ? "it belongs to user 12345, and this process to " + user : ""},
      {"real", "no room for "},
  };
  for (const auto& [directory, why] : cases) {
    if (why.empty()) continue;
    EXPECT_EQ(0, statusInChild([&, &directory = directory, &why = why] {
                const InternalLog lines;
                const rlimit limit = {4096, 4096};
                if (directory == "real") ::setrlimit(RLIMIT_FSIZE, &limit);
                Program program(dir, directory + ".log");
                program.queue.setDirectory(dir.file(directory).c_str());
                program.logAll(1, 3);
                program.queue.close();
                ASSERT_TRUE(lines.contains("[durable] -- no queue in " + dir.file(directory) + ": " + why))
                    << lines.text();
                ASSERT_TRUE(lines.contains("[durable] -- events are in memory only, and a kill takes them along"));
              }));
    EXPECT_EQ(directory == "file/below" ? "" : "0 1 end\n0 2 end\n0 3 end\n", dir.read(directory + ".log"));
  }
}

TEST_F(LOGDurableAsyncAppenderTest, TheProgramForPeopleShowsAndDeliversWhatIsLeft) {
  const auto run = [&](const std::string& arguments) {
    const std::string program = LOG4VRK_BINARY_DIR "/tools/log4vrk-recover ";
    return statusOf(startProgram({"sh", "-c", program + arguments + " >" + dir.file("said") + " 2>&1"}));
  };
  const std::string rings = dir.file("rings");
  killAt(dir, VRKFault::QUEUE_ANNOUNCED, 1);
  EXPECT_EQ(1, run(rings)) << "something is to be delivered";
  const Texts parts = {"durable of appenders_test", "without owner", "log file: " + dir.file("log"), "pattern:  %m%n",
                       "16 events, and 4 that the log file has"};
  for (const std::string& part : parts) {
    EXPECT_NE(std::string::npos, dir.read("said").find(part)) << dir.read("said");
  }
  EXPECT_EQ(0, run("--recover " + rings)) << dir.read("said");
  expectEachOnceInOrder(linesWithBackups(dir.file("log")), 1, EVENTS);
  EXPECT_EQ(0, run(rings)) << dir.read("said");
  EXPECT_EQ(-SIGKILL, statusInChild([&] {  // before its dispatcher has done anything
    Program program(dir, "early");
    program.queue.activateOptions();
    ::raise(SIGKILL);
  }));
  EXPECT_EQ(0, run(rings));
  EXPECT_NE(std::string::npos, dir.read("said").find("log file: " + dir.file("early"))) << dir.read("said");
  dir.write("rings/durable-1-0.ring", "foreign");
  EXPECT_EQ(1, run("--recover " + rings));
  EXPECT_EQ("foreign", dir.read("rings/durable-1-0.ring.damaged"));
  EXPECT_EQ(2, run("--recover"));
  EXPECT_EQ(2, run(dir.file("nowhere")));
}

TEST_F(LOGDurableAsyncAppenderTest, KeepsOrderThroughAFullRingAndDeliversEverythingWhenItCloses) {
  constexpr int THREADS = 4;
  constexpr long EACH = 5000;
  {
    Program program(dir, "log", "%t %m%n");
    program.queue.setBufferSize(1);
    program.file.setMaximumFileSize(1000000);
    onThreads(THREADS, [&](int t) {
      for (long n = 1; n <= EACH; ++n) logNumber(program.logger, n % 5 == 0 ? Way::ORDINARY : Way::FAST, t, n);
    });
    program.queue.close();
    std::map<std::string, std::string> threads;
    std::vector<std::string> lines = linesWithBackups(dir.file("log"));
    for (std::string& line : lines) {
      const std::size_t blank = line.find(' ');
      const std::string thread = line.substr(0, blank);
      line.erase(0, blank + 1);
      EXPECT_EQ(line[0], threads.emplace(thread, line).first->second[0]) << "not of that thread";
    }
    EXPECT_EQ(static_cast<std::size_t>(THREADS), threads.size());
    expectEachOnceInOrder(lines, THREADS, EACH);
    EXPECT_TRUE(namesIn(dir.file("rings")).empty());
    program.logger->info("after the end");
    EXPECT_EQ(1, log.count("Attempted to append to closed appender named [durable]."));
  }
  // What is too long for the ring is in the file when the call returns.
  const std::string text(100000, 'x');
  Program program(dir, "long", "%t %x %m%n");
  LOGNDC::push("context");
  LOG4VRK_INFO(program.logger, text);
  EXPECT_EQ(std::to_string(VRKThread::currentThreadId()) + " context " + text,
            linesWithBackups(dir.file("long")).at(0));
  LOGNDC::remove();
  LOG4VRK_INFO(program.logger, text);
  EXPECT_EQ(std::to_string(VRKThread::currentThreadId()) + "  " + text, linesWithBackups(dir.file("long")).at(1));
}
