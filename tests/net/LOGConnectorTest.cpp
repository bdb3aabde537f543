// The TCP socket appender against a log server that does as it is told.

#include <pthread.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>

#include <cstdlib>
#include <new>
#include <set>

#include "log4vrk/net/internal/LOGConnector.h"
#include "log4vrk/net/internal/LOGOutboxRing.h"
#include "log4vrk/net/internal/LOGRecoveryRecord.h"
#include "tests/support/ScriptedLogServer.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

/// The thread of whose allocations one in so many fails, in no order.
std::atomic<long> g_victim{0};
std::atomic<std::uint32_t> g_every{1};

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
  thread_local std::uint32_t state = 1;
  if (g_victim != 0 && g_victim == VRKThread::currentThreadId()) {
    state = state * 1664525 + 1013904223;
    if ((state >> 8) % g_every == 0) throw std::bad_alloc();
  }
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;
using Server = ScriptedLogServer;

Server::Answer hold(const std::string&) { return Server::HOLD; }
Server::Answer accept(const std::string&) { return Server::ACCEPT; }

Texts numbers(int first, int last) {
  Texts result;
  for (; first <= last; ++first) result.push_back(std::to_string(first));
  return result;
}

/// What is left of them after each first occurrence.
Texts withoutRepetitions(const Texts& texts) {
  Texts result;
  std::set<std::string> seen;
  for (const std::string& text : texts) {
    if (seen.insert(text).second) result.push_back(text);
  }
  return result;
}

std::set<long> threads() {
  std::set<long> result;
  for (const std::string& name : namesIn("/proc/self/task")) result.insert(std::stol(name));
  return result;
}

struct Client : LOGTCPSocketAppender {
  explicit Client(int port = 0, const char* name = "") {
    setName(name);
    setRemoteHost("127.0.0.1");
    if (port != 0) setPort(port);
  }
};

class ConnectorTest : public testing::Test {
 protected:
  explicit ConnectorTest(Server::Script script = &accept) : server(std::move(script)) {
    VRKConfigurationFactory::getInstance().setBaseDirectory(dir.file("work").c_str());
    std::filesystem::create_directory(dir.file("run"));
    ::setenv("XDG_RUNTIME_DIR", dir.file("run").c_str(), 1);
    appender.setReconnectionDelay(20);
  }
  ~ConnectorTest() override {
    g_victim = 0;
    logger->removeAppender(&appender);
    appender.close();
  }

  void log(int first, int last) {
    for (const std::string& number : numbers(first, last)) logger->info(number.c_str());
  }
  /// Begins to log to it; the number of the sending thread.
  long open() {
    const std::set<long> before = threads();
    logger->addAppender(&appender);
    appender.activateOptions();
    for (const long thread : threads()) {
      if (before.count(thread) == 0) return thread;
    }
    return 0;
  }
  Texts files() const { return namesIn(dir.file("logs/recovery/local")); }
  Texts outboxes() const { return namesIn(dir.file("run/log4vrk")); }
  bool acknowledges(std::uint64_t count) const {
    return eventually([&] { return appender.getAcknowledged() == count; }, 30);
  }

  const Deadline deadline{110};
  TempDir dir;
  const InternalLog internal;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("shop");
  Server server;
  Client appender{server.port(), "server"};
};

struct HoldingServerTest : ConnectorTest {
  HoldingServerTest() : ConnectorTest(&hold) {}
};

TEST_F(HoldingServerTest, KeepsToTheWindowAndToTheOrderRepeatsNothingAfterAStallAndReleasesItsMemory) {
  open();
  log(1, 300);
  const auto inUse = [&] {
    const std::string file = dir.read("run/log4vrk/" + outboxes().at(0));
    const auto& control = *reinterpret_cast<const LOGOutboxRing::Control*>(file.data() + LOGOutboxRing::PAGE);
    return control.tail - control.head;
  };
  EXPECT_TRUE(eventually([&] { return appender.getInRecovery() == 300 && inUse() == 0; })) << "they are in a file";
  EXPECT_EQ(LOGRelpSession::WINDOW, server.held());
  log(301, 310);
  server.lets = Server::ALL;
  EXPECT_TRUE(acknowledges(310));
  EXPECT_EQ(numbers(1, 310), server.received());
  EXPECT_TRUE(eventually([&] { return files().empty(); }));
  log(311, 320);
  EXPECT_TRUE(eventually([&] { return appender.getAcknowledged() == 320 && inUse() == 0; }));
}

// Many events that fill the queue before the thread would look for itself.
TEST_F(HoldingServerTest, EmptiesTheQueueWhenItIsHalfFull) {
  open();
  const std::string large(60000, 'x');
  for (int i = 0; i < 20; ++i) logger->info(large.c_str());
  EXPECT_TRUE(eventually([&] { return server.held() > 10; }));
  EXPECT_LE(server.held(), LOGRelpSession::WINDOW_BYTES / large.size() + 1);
  for (int i = 0; i < 250; ++i) logger->info(large.c_str());
  EXPECT_EQ(0u, appender.getDropped());
  EXPECT_TRUE(eventually([&] { return appender.getInRecovery() > 0; }));
}

// Events from memory are on their way when the next of very many files are taken over. Their acknowledgement is not
// that of what came out of the files.
TEST_F(HoldingServerTest, DoesNotTakeWhatItKeepsForWhatFilesHad) {
  for (int i = 100; i < 200; ++i) {
    std::string record;
    LOGRecoveryRecord{1, "<14>1 [stream=\"x\"] old" + std::to_string(i)}.appendTo(record);
    dir.write("logs/recovery/local/20260102030405-00000" + std::to_string(i), record);
  }
  open();
  EXPECT_TRUE(eventually([&] { return server.held() == 64; }));
  EXPECT_EQ(server.received().front(), "old100");
  log(1, 3);
  EXPECT_TRUE(eventually([&] { return server.held() == 67; }));
  server.lets = 64;
  EXPECT_TRUE(eventually([&] { return server.held() == 39 && appender.getInRecovery() == 39; }));
  server.lets = 3;
  EXPECT_TRUE(acknowledges(67));
  appender.close();
  Client next(server.port());
  server.lets = Server::ALL;
  next.activateOptions();
  EXPECT_TRUE(eventually([&] { return next.getAcknowledged() >= 36 && next.getInRecovery() == 0; }));
  EXPECT_TRUE(eventually([&] { return files().empty(); }));
  Texts again = server.received();
  again.erase(again.begin(), again.begin() + 103);
  EXPECT_EQ(1, std::count(again.begin(), again.end(), "old199"));
  EXPECT_EQ(1, std::count(again.begin(), again.end(), "old164"));
}

TEST_F(HoldingServerTest, ClosesInTimeWhileTheServerSendsNothingButHints) {
  open();
  log(1, 1);
  EXPECT_TRUE(eventually([&] { return server.held() == 1; }));
  server.hints = true;
  log(2, 10);
  EXPECT_TRUE(eventually([&] { return appender.getInRecovery() == 10; }));
  const Clock::time_point begin = Clock::now();
  appender.close();
  EXPECT_LT(Clock::now() - begin, LOGConnector::LONGEST_FAREWELL + seconds(1));
  EXPECT_FALSE(internal.contains("closed without waiting")) << internal.text();
}

TEST_F(ConnectorTest, SetsAsideWhatTheServerDoesNotTakeAndDeliversTheRest) {
  std::atomic<bool> takesAll{false}, hasRefused{false};
  Server picky([&](const std::string& text) {
    if (takesAll) return Server::ACCEPT;
    if (text == "50" || (text == "70" && !hasRefused.exchange(true))) return Server::REFUSE;
    return text == "60" || text == "61" || text == "300" ? Server::BREAK : Server::ACCEPT;
  });
  appender.setPort(picky.port());
  open();
  log(1, 300);
  EXPECT_TRUE(acknowledges(296)) << appender.getAcknowledged();
  EXPECT_TRUE(eventually([&] { return appender.getDropped() == 4 && appender.getInRecovery() == 0; }));
  Texts delivered = withoutRepetitions(picky.received());
  std::sort(delivered.begin(), delivered.end());
  Texts expected = numbers(1, 300);
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(expected, delivered);
  const Texts aside = files();
  ASSERT_EQ(1u, aside.size());
  EXPECT_EQ(1, internal.count("the log server refuses events, which are counted and set aside in " +
                              std::filesystem::absolute(dir.file("work/../logs/recovery/local/" + aside[0])).string()))
      << internal.text();
  appender.close();
  const std::string file = dir.file("logs/recovery/local/" + aside[0]);
  std::filesystem::rename(file, file.substr(0, file.rfind('.')));  // and they are sent again
  takesAll = true;
  Client next(picky.port());
  next.activateOptions();
  EXPECT_TRUE(eventually([&] { return next.getAcknowledged() == 4; }));
  const Texts again = picky.received();
  EXPECT_EQ(Texts({"50", "60", "61", "300"}), Texts(again.end() - 4, again.end()));
}

// No thread has a stack of that size.
TEST_F(ConnectorTest, KeepsEventsWhileThereIsNoThreadAndDeliversThemWhenThereIs) {
  pthread_attr_t usual, huge;
  ASSERT_EQ(0, ::pthread_getattr_default_np(&usual));
  ::pthread_attr_init(&huge);
  ::pthread_attr_setstacksize(&huge, std::numeric_limits<std::size_t>::max() / 8 * 7);
  ASSERT_EQ(0, ::pthread_setattr_default_np(&huge));
  EXPECT_EQ(0, open());
  log(1, 3);
  EXPECT_TRUE(eventually([&] {
    appender.activateOptions();
    return appender.getInRecovery() == 3;
  }));
  EXPECT_EQ(1, internal.count("there is no thread to send with, events are kept")) << internal.text();
  ASSERT_EQ(0, ::pthread_setattr_default_np(&usual));
  EXPECT_TRUE(eventually([&] {
    appender.activateOptions();
    return appender.getAcknowledged() >= 3;
  }));
  const Texts received = server.received();
  EXPECT_EQ(numbers(1, 3), Texts(received.begin(), received.begin() + 3));
  EXPECT_EQ(0u, appender.getDropped());
}

TEST_F(ConnectorTest, ShortageOfMemoryOnItsThreadLosesNothing) {
  const long thread = open();
  ASSERT_NE(0, thread);
  int last = 0;
  for (std::uint32_t every = 120; every > 0; every -= 4) {
    g_every = every;
    g_victim = thread;
    log(last + 1, last + 50);
    last += 50;
    server.away = every % 10 == 0;
    eventually([&] { return appender.getAcknowledged() >= static_cast<std::uint64_t>(last); }, 1);
    server.away = false;
    g_victim = 0;
    EXPECT_TRUE(eventually([&] { return appender.getAcknowledged() >= static_cast<std::uint64_t>(last); }, 20));
  }
  EXPECT_TRUE(
      eventually([&] { return withoutRepetitions(server.received()).size() == static_cast<std::size_t>(last); }, 20));
  EXPECT_EQ(numbers(1, last), withoutRepetitions(server.received()));
  EXPECT_EQ(0u, appender.getDropped());
}

TEST_F(HoldingServerTest, SettingsOfAnOpenAppenderHoldAtOnce) {
  appender.setReconnectionDelay(3600000);
  open();
  log(1, 5);
  EXPECT_TRUE(eventually([&] { return server.held() == 5; }));
  Server other(&accept);
  appender.setPort(other.port());
  EXPECT_TRUE(acknowledges(5));
  EXPECT_EQ(numbers(1, 5), other.received());
}

/// Stops one thread of this process for its life, wherever it is, as a file system does that does not answer.
class Standstill {
 public:
  explicit Standstill(long thread) {
    int ready[2];
    EXPECT_EQ(0, ::pipe(ready));
    ::prctl(PR_SET_PTRACER, PR_SET_PTRACER_ANY);
    m_tracer = ::fork();
    if (m_tracer == 0) {
      int status;
      const bool stopped = ::ptrace(PTRACE_SEIZE, thread, 0, 0) == 0 && ::ptrace(PTRACE_INTERRUPT, thread, 0, 0) == 0 &&
                           ::waitpid(static_cast<pid_t>(thread), &status, __WALL) == thread;
      if (::write(ready[1], stopped ? "y" : "n", 1) != 1) ::_exit(1);
      for (;;) ::pause();
    }
    char answer = 'n';
    holds = ::read(ready[0], &answer, 1) == 1 && answer == 'y';
    for (const int end : ready) ::close(end);
  }
  ~Standstill() {
    ::kill(m_tracer, SIGKILL);
    statusOf(m_tracer);
  }

  bool holds;

 private:
  pid_t m_tracer;
};

TEST_F(ConnectorTest, CountsWhatItLeavesBehindWithAThreadThatIsStuck) {
  server.away = true;
  appender.setReconnectionDelay(3600000);
  const long thread = open();
  log(1, 1);
  EXPECT_TRUE(eventually([&] { return appender.getInRecovery() == 1; }));
  {
    const Standstill standstill(thread);
    if (!standstill.holds) GTEST_SKIP() << "threads cannot be stopped here";
    log(2, 11);
    const Clock::time_point begin = Clock::now();
    appender.close();
    EXPECT_LT(Clock::now() - begin, seconds(5));
    EXPECT_EQ(0u, appender.getDropped());
    EXPECT_EQ(1, internal.count("closed without waiting any longer for its thread; events in its memory: 10; the next "
                                "start finds them in " +
                                dir.file("run/log4vrk/")))
        << internal.text();
  }
  EXPECT_TRUE(eventually([&] { return threads().count(thread) == 0; })) << "it comes out of it";
}

// Neither the server nor a recovery file has an event when it is killed, and files are found that nobody could move.
TEST_F(HoldingServerTest, DeliversWhatAKilledProcessHadInMemoryBeforeItsOwn) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizers are not made for forks of several threads; the release build runs this";
#endif
  EXPECT_EQ(-SIGKILL, statusInChild([&] {
    logger->addAppender(&appender);
    log(1, 300);
    ASSERT_EQ(1u, outboxes().size());
    ::raise(SIGKILL);
  }));
  server.away = true;
  std::filesystem::remove_all(dir.file("logs"));
  dir.write("logs", "a file where the directory belongs");
  open();
  log(301, 305);
  EXPECT_TRUE(eventually([&] { return internal.contains("could not keep a message"); })) << internal.text();
  appender.close();
  EXPECT_EQ(0u, appender.getDropped());
  EXPECT_EQ(1, internal.count("closed with events that could neither be sent nor kept: 5; the next start finds them"));
  EXPECT_EQ(2u, outboxes().size()) << "they stay";
  server.away = false;
  server.lets = Server::ALL;
  std::filesystem::remove(dir.file("logs"));
  Client next(server.port(), "next");
  next.activateOptions();
  EXPECT_TRUE(eventually([&] { return next.getAcknowledged() == 305; })) << internal.text();
  EXPECT_EQ(numbers(1, 305), withoutRepetitions(server.received()));
  EXPECT_EQ(1, internal.count("has ended with events that were in no recovery file, and now are: 5"))
      << internal.text();
  EXPECT_EQ(1u, outboxes().size()) << "its own";
  next.close();
  EXPECT_TRUE(outboxes().empty());
}

// As where the run-time memory is full: a file of that size cannot be had.
TEST_F(ConnectorTest, SaysWhatAKillTakesAlongWhereItCannotHaveAFile) {
  rlimit before;
  ASSERT_EQ(0, ::getrlimit(RLIMIT_FSIZE, &before));
  const rlimit small = {1 << 20, before.rlim_max};
  ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &small));
  server.away = true;
  dir.write("logs", "a file where the directory belongs");
  open();
  ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &before));
  log(1, 10);
  for (const char* line : {"[server] -- no queue in ", "no room for 4202496 bytes: ",
                           "[server] -- events are in memory only for up to half a second, and a kill"}) {
    EXPECT_TRUE(internal.contains(line)) << line << "\n" << internal.text();
  }
  EXPECT_TRUE(outboxes().empty());
  appender.close();
  EXPECT_EQ(10u, appender.getDropped());
  EXPECT_EQ(1, internal.count("closed with events that could neither be sent nor kept: 10"));
  EXPECT_FALSE(internal.contains("the next start"));
}

TEST_F(HoldingServerTest, FinishesEverythingInTimeBeforeTheProcessEnds) {
  Server takes(&accept);
  Client other(takes.port());
  other.activateOptions();
  open();
  log(1, 200);
  logger->addAppender(&other);
  log(201, 210);
  const Clock::time_point begin = Clock::now();
  LOGConnector::finishAll(begin + seconds(1));
  EXPECT_LT(Clock::now() - begin, milliseconds(1200));
  EXPECT_EQ(210u, appender.getInRecovery());
  EXPECT_EQ(10u, other.getAcknowledged());
  EXPECT_EQ(numbers(201, 210), takes.received());
  Client late(0, "late");
  logger->addAppender(&late);
  log(211, 211);
  for (const char* name : {"[server]", "[]", "[late]"}) {
    EXPECT_EQ(1, internal.count(std::string("Attempted to append to closed appender named ") + name));
  }
  logger->removeAppender(&late);
  logger->removeAppender(&other);
}

}  // namespace
