// The TCP socket appender against a real daemon.

#include <cstdio>
#include <set>

#include "log4vrk/net/internal/LOGConnector.h"
#include "log4vrk/net/internal/LOGOutbox.h"
#include "log4vrk/net/internal/LOGRelpSession.h"
#include "tests/support/Rsyslog.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long EVENTS = 20000;
constexpr int KILLS = 5, CLIENTS = 5, ROUNDS = 3;
constexpr std::chrono::seconds STANDSTILL{2};
#else
constexpr long EVENTS = 100000;
constexpr int KILLS = 20, CLIENTS = 5, ROUNDS = 42;
constexpr std::chrono::seconds STANDSTILL{10};
#endif

/// What the server has stored, as a receiver sees it that drops what it has had already.
struct Received {
  explicit Received(const Texts& lines) {
    std::set<std::string> seen;
    for (const std::string& line : lines) {
      // A killed daemon may leave half of an event that it has not acknowledged, and the next one goes on behind it.
      const std::size_t message = line.rfind("<14>1 ");
      const std::size_t begin = line.find("stream=\"", message), end = line.find("\" logger=", message);
      const std::size_t text = line.find("\"] ", end);
      if (begin == line.npos || end == line.npos || text == line.npos) {
        ADD_FAILURE() << "no event of ours: " << line;
      } else if (seen.insert(line.substr(begin, end - begin)).second) {
        texts.push_back(line.substr(text + 3));
      } else {
        ++repetitions;
      }
    }
  }

  Texts texts;
  long repetitions = 0;
};

/// How often the thread had to give way to another one, which is the machine's business and not the log call's.
long preemptions() {
  rusage usage;
  ::getrusage(RUSAGE_THREAD, &usage);
  return usage.ru_nivcsw;
}

class LogServerTest : public testing::Test {
 protected:
  LogServerTest() {
    VRKConfigurationFactory::getInstance().setBaseDirectory(dir.file("work").c_str());
    appender.setName("server");
    appender.setRemoteHost("127.0.0.1");
    appender.setReconnectionDelay(500);
  }
  ~LogServerTest() override { logger->removeAppender(&appender); }
  void SetUp() override {
    const std::string missing = Rsyslog::missing();
    if (!missing.empty()) GTEST_SKIP() << missing;
    server = std::make_unique<Rsyslog>();
  }

  void open(bool secure = false) {
    appender.setPort(secure ? server->tlsPort() : server->relpPort());
    if (secure) {
      appender.setRemoteHost("localhost");
      appender.setSecure(1);
      appender.setAuthorities(server->certificate("ca").c_str());
    }
    logger->addAppender(&appender);
  }
  void logNumbers(int writer, long count) {
    for (long n = 1; n <= count; ++n) LOG4VRK_INFO(logger, writer << " " << n << " end");
  }
  std::size_t recoveryFiles() const { return namesIn(dir.file("logs/recovery/local")).size(); }
  bool acknowledges(std::uint64_t count) const {
    return eventually([&] { return appender.getAcknowledged() >= count; }, 60);
  }
  std::uint64_t settled() const { return appender.getAcknowledged() + appender.getDropped(); }

  // Threads log all the while; the server is killed whenever another part of the events has arrived.
  void surviveKills(bool secure, long events, int kills) {
    ASSERT_TRUE(server->startAndWait());
    open(secure);
    constexpr int WRITERS = 4;
    std::atomic<std::uint64_t> logged{0};
    // A log call that finds no space for long drops its event: on a busy machine writers must not get too far ahead.
    const auto pace = [&] { return logged < appender.getAcknowledged() + appender.getInRecovery() + 8192; };
    std::thread writers([&] {
      onThreads(WRITERS, [&](int writer) {
        for (long n = 1; n <= events / WRITERS; ++n) {
          LOG4VRK_INFO(logger, writer << " " << n << " end");
          if (++logged % 256 == 0) eventually(pace);
        }
      });
    });
    for (int kill = 1; kill <= kills; ++kill) {
      const auto part = static_cast<std::uint64_t>(events * kill / (kills + 1));
      EXPECT_TRUE(acknowledges(part)) << kill;
      server->kill();
      server->start();
    }
    writers.join();
    EXPECT_TRUE(acknowledges(static_cast<std::uint64_t>(events)));
    appender.close();
    const Received received(server->lines());
    expectEachOnceInOrder(received.texts, WRITERS, events / WRITERS);
    EXPECT_LE(received.repetitions, static_cast<long>(LOGRelpSession::WINDOW) * kills);
    EXPECT_EQ(0u, appender.getDropped());
    EXPECT_EQ(0u, appender.getInRecovery());
    EXPECT_EQ(0u, recoveryFiles());
    std::printf("%ld events, %d kills: %ld repeated.\n", events, kills, received.repetitions);
  }

  const Deadline deadline{115};
  TempDir dir;
  const InternalLog log;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("shop");
  LOGTCPSocketAppender appender;
  std::unique_ptr<Rsyslog> server;
};

TEST_F(LogServerTest, LosesNothingWhileTheServerIsKilledAgainAndAgain) { surviveKills(false, EVENTS, KILLS); }

TEST_F(LogServerTest, LosesNothingOverTlsWhileTheServerIsKilled) { surviveKills(true, EVENTS / 10, 3); }

// What the network, the disk and the server do is the sending thread's business alone.
TEST_F(LogServerTest, DoesNotSlowLogCallsDownWhileTheServerStandsStill) {
  using Clock = std::chrono::steady_clock;
  ASSERT_TRUE(server->startAndWait());
  open();
  logNumbers(0, 1);
  ASSERT_TRUE(acknowledges(1));
  server->stop();
  std::vector<Clock::duration> times;
  const auto end = Clock::now() + STANDSTILL;
  long n = 1;
  while (Clock::now() < end) {
    const long preempted = preemptions();
    const auto before = Clock::now();
    LOG4VRK_INFO(logger, 0 << " " << ++n << " end");
    const auto time = Clock::now() - before;
    if (preemptions() == preempted) times.push_back(time);
    std::this_thread::sleep_until(before + std::chrono::microseconds(100));
  }
  server->resume();
  ASSERT_TRUE(eventually([&] { return settled() >= static_cast<std::uint64_t>(n); }));
  EXPECT_EQ(0u, appender.getDropped());
  const auto slow = times.begin() + static_cast<long>(times.size() * 999 / 1000);
  std::nth_element(times.begin(), slow, times.end());
  std::printf("99.9 %% of %zu log calls took at most %.1f us.\n", times.size(),
              std::chrono::duration<double, std::micro>(*slow).count());
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_LT(*slow, std::chrono::milliseconds(1)) << "99.9 % of " << times.size();
#endif
  expectEachOnceInOrder(Received(server->lines()).texts, 1, n);
}

/// A process that logs numbered lines for ever, some thousand a second.
class Client {
 public:
  Client(int writer, const Rsyslog& server) : m_writer(writer), m_server(server) {
    start([this](LOGLogger* logger, const LOGTCPSocketAppender&) {
      for (long n = 1;; ++n) {
        LOG4VRK_INFO(logger, m_writer << " " << n << " end");
        m_returned = n;
        if (n % 10 == 0) VRKThread::sleep(1000);
      }
    });
  }

  /// Another process delivers what is left, and ends. An event of its own goes behind that: when that is acknowledged,
  /// everything is.
  void deliver() {
    start([other = 100000 + 2 * m_writer + m_deliveries++](LOGLogger* logger, const LOGTCPSocketAppender& appender) {
      LOG4VRK_INFO(logger, other << " 1 end");
      EXPECT_TRUE(eventually([&] { return appender.getAcknowledged() > 0 && appender.getInRecovery() == 0; }, 60));
    });
  }
  int kill() const {
    ::kill(m_process, SIGKILL);
    return status();
  }
  int status() const { return statusOf(m_process); }

  int writer() const { return m_writer; }
  /// How many log calls have returned.
  long returned() const { return m_returned; }

 private:
  void start(const std::function<void(LOGLogger*, const LOGTCPSocketAppender&)>& body) {
    m_process = startChild([&] {
      VRKConfigurationFactory::getInstance().setBaseDirectory(m_dir.file("work").c_str());
      LOGTCPSocketAppender appender;
      appender.setName("client");
      appender.setRemoteHost("127.0.0.1");
      appender.setPort(m_server.relpPort());
      LOGLogger* const logger = LOGManager::getLogger("client");
      logger->addAppender(&appender);
      body(logger, appender);
      logger->removeAppender(&appender);
    });
  }

  const int m_writer;
  const Rsyslog& m_server;
  const TempDir m_dir;
  int m_deliveries = 0;
  std::atomic<long>& m_returned = sharedWithChildren<std::atomic<long>>();
  pid_t m_process = -1;
};

// A kill takes nothing along, whatever the server does; nor does one of the program that delivers what is left.
TEST_F(LogServerTest, LosesNothingWhoseLogCallHadReturnedWhenTheClientIsKilled) {
  enum { WELL, STANDS_STILL, AWAY, STATES };
  static constexpr const char* WHAT[] = {"was well", "stood still", "was away"};
  const std::string memory = "/dev/shm/" + std::to_string(::getpid()) + ".test";
  std::filesystem::create_directory(memory);
  ::setenv("XDG_RUNTIME_DIR", memory.c_str(), 1);
  ASSERT_TRUE(server->startAndWait());
  std::mt19937 random(20261121);
  const auto pause = [&](unsigned most) { std::this_thread::sleep_for(std::chrono::microseconds(random() % most)); };
  std::list<Client> rounds[ROUNDS];
  for (int round = 0; round < ROUNDS; ++round) {
    const int state = round % STATES;
    std::list<Client>& clients = rounds[round];
    if (state == STANDS_STILL) server->stop();
    if (state == AWAY) server->kill();
    for (int i = 0; i < CLIENTS; ++i) clients.emplace_back(round * CLIENTS + i, *server);
    for (const Client& client : clients) EXPECT_TRUE(eventually([&] { return client.returned() > 0; }));
    for (const Client& client : clients) {
      pause(state == WELL ? 50000 : 250000);
      ASSERT_EQ(-SIGKILL, client.kill()) << "the program ended by itself";
    }
    if (state == STANDS_STILL) server->resume();
    if (state == AWAY) {
      ASSERT_TRUE(server->startAndWait());
    }
    for (Client& client : clients) {
      client.deliver();
      pause(3000);
      EXPECT_EQ(-SIGKILL, client.kill());
    }
    for (Client& client : clients) client.deliver();
    for (const Client& client : clients) ASSERT_EQ(0, client.status());
  }
  std::map<int, long> last;
  const Received received(server->lines());
  ASSERT_NO_FATAL_FAILURE(lastNumbers(received.texts, last)) << "a gap";
  long logged[STATES] = {}, lost[STATES] = {};
  for (int round = 0; round < ROUNDS; ++round) {
    for (const Client& client : rounds[round]) {
      logged[round % STATES] += client.returned();
      lost[round % STATES] += std::max(0L, client.returned() - last[client.writer()]);
    }
  }
  for (int state = 0; state < STATES; ++state) {
    EXPECT_EQ(0, lost[state]);
    std::printf("%d programs killed while the server %s: %ld of %ld events lost.\n", ROUNDS / STATES * CLIENTS,
                WHAT[state], lost[state], logged[state]);
  }
  std::printf("%ld events came twice.\n", received.repetitions);
  EXPECT_TRUE(std::filesystem::is_empty(memory + "/log4vrk"));
  std::filesystem::remove_all(memory);
}

TEST_F(LogServerTest, LosesNothingWhenTheProgramExitsWithoutAShutdown) {
  using Clock = std::chrono::steady_clock;
  ASSERT_TRUE(server->startAndWait());
  const auto logAndExit = [&](long first) {
    const Clock::time_point begin = Clock::now();
    EXPECT_EQ(0, statusInChild([&] {
                open();
                for (long n = first; n < first + 400; ++n) LOG4VRK_INFO(logger, 0 << " " << n << " end");
                std::exit(0);
              }));
    EXPECT_LT(Clock::now() - begin, std::chrono::milliseconds(3500));
  };
  logAndExit(1);
  EXPECT_TRUE(eventually([&] { return server->lines().size() == 400; }));
  EXPECT_EQ(0u, recoveryFiles());
  server->stop();
  logAndExit(401);
  server->resume();
  EXPECT_EQ(1u, recoveryFiles());
  open();
  LOG4VRK_INFO(logger, "0 801 end");  // goes behind what is in the file
  EXPECT_TRUE(acknowledges(401));
  expectEachOnceInOrder(Received(server->lines()).texts, 1, 801);
}

// Each kind of server that is not the right one: one line says why, and the events wait until the right one is there.
TEST_F(LogServerTest, KeepsEventsFromTheWrongServerAndSaysWhyOnce) {
  Rsyslog &right = *server, expired("expired"), other("other"), bare("bare"), strict("server", true);
  for (Rsyslog* const each : {&right, &expired, &other, &bare, &strict}) ASSERT_TRUE(each->startAndWait());
  const struct {
    const char* what;
    bool secure;
    int port;
    const Rsyslog* authority;
    const char* line;
  } cases[] = {
      {"another authority", true, right.tlsPort(), &expired, "certificate is not accepted: "},
      {"expired", true, expired.tlsPort(), &expired, "certificate is not accepted: certificate has expired"},
      {"another name", true, other.tlsPort(), &other, "certificate is not accepted: hostname mismatch"},
      {"the name as common name only", true, bare.tlsPort(), &bare, "certificate is not accepted: hostname mismatch"},
      {"TLS to a plain server", true, right.relpPort(), &right, "TLS handshake: "},
      {"plain to a TLS server", false, right.tlsPort(), &right, "perhaps it wants TLS"},
      {"no client certificate", true, strict.tlsPort(), &strict, "certificate required"},
      {"nobody there", false, 1, &right, "Connection refused"},
      {"no such name", false, 0, &right, "there is no address of that name and port"},
  };
  long number = 0;
  for (const auto& each : cases) {
    const InternalLog own;
    LOGTCPSocketAppender wrong;
    wrong.setName("wrong");
    wrong.setRemoteHost(each.port == 0 ? "no-such-host.invalid" : "localhost");
    wrong.setPort(each.port);
    wrong.setSecure(each.secure ? 1 : 0);
    wrong.setAuthorities(each.authority->certificate("ca").c_str());
    wrong.setReconnectionDelay(20);
    logger->addAppender(&wrong);
    LOG4VRK_INFO(logger, 0 << " " << ++number << " end");
    const std::string begin =
        "log4vrk:ERROR LOGTCPSocketAppender -- [wrong] -- there is no connection to the log server ";
    EXPECT_TRUE(eventually([&] { return own.contains(begin); })) << each.what;
    std::this_thread::sleep_for(std::chrono::milliseconds(200));  // some more attempts
    logger->removeAppender(&wrong);
    wrong.close();
    EXPECT_EQ(1, own.count(begin)) << each.what << "\n" << own.text();
    EXPECT_TRUE(own.contains(each.line)) << each.what << "\n" << own.text();
    EXPECT_EQ(0u, wrong.getDropped());
  }
  open(true);
  appender.activateOptions();
  EXPECT_TRUE(acknowledges(static_cast<std::uint64_t>(number)));
  expectEachOnceInOrder(Received(right.lines()).texts, 1, number);
}

// What is wrong is made good while it waits, with the events in files.
TEST_F(LogServerTest, ShowsItsCertificateAsSoonAsItHasTheLibraryAndTheKey) {
  server = std::make_unique<Rsyslog>("server", true);
  ASSERT_TRUE(server->startAndWait());
  VRKFault::arm(VRKFault::LIBRARY, 1000000);
  appender.setReconnectionDelay(20);
  appender.setCertificate(server->certificate("client").c_str(), server->key("locked").c_str());
  open(true);
  logNumbers(0, 10);
  EXPECT_TRUE(eventually([&] { return appender.getInRecovery() == 10; }));
  EXPECT_EQ(1, log.count("there is no TLS library (libssl.so.3) on this machine")) << log.text();
  VRKFault::disarm();
  EXPECT_TRUE(eventually([&] { return log.contains(server->key("locked") + " cannot be used, because it needs a "); }))
      << log.text();
  appender.setCertificate(server->certificate("client").c_str(), server->key("client").c_str());
  EXPECT_TRUE(acknowledges(10)) << log.text();
  expectEachOnceInOrder(Received(server->lines()).texts, 1, 10);
}

// Without recovery files, memory holds what it can; then events are dropped and counted. Log calls go on.
TEST_F(LogServerTest, GoesOnWithoutRecoveryFiles) {
  dir.write("logs", "a file where the directory belongs");
  open();
  constexpr long MANY = 50000;
  logNumbers(0, MANY);
  const auto dropped = static_cast<long>(appender.getDropped());
  EXPECT_GT(dropped, 0);
  EXPECT_GE(MANY - dropped, static_cast<long>(LOGOutbox::MOST_BYTES / 256));
  EXPECT_EQ(1, log.count("the queue is full")) << log.text();
  EXPECT_EQ(1, log.count("could not keep a message")) << log.text();
  ASSERT_TRUE(server->startAndWait());
  EXPECT_TRUE(eventually([&] { return settled() == MANY; }));
  Texts texts = Received(server->lines()).texts;
  ASSERT_EQ(static_cast<std::size_t>(MANY - dropped), texts.size());
  EXPECT_EQ("0 1 end", texts.front());
}

// A child sends what is its own, on a connection of its own; what the parent has in flight stays the parent's.
TEST_F(LogServerTest, AForkedChildHasAStreamOfItsOwn) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizers are not made for forks of several threads; the release build runs this";
#endif
  ASSERT_TRUE(server->startAndWait());
  open();
  constexpr int CHILDREN = 20;
  constexpr long EACH = 50;
  std::atomic<bool> forking{true};
  std::atomic<long> logged{0};
  std::thread parent([&] {
    for (; forking; std::this_thread::sleep_for(std::chrono::microseconds(50)))
      LOG4VRK_INFO(logger, 0 << " " << ++logged << " end");
  });
  for (int child = 1; child <= CHILDREN; ++child) {
    EXPECT_EQ(0, statusInChild([&] {
                if (child % 5 == 0) {  // says nothing, and waits at its end for nothing of the parent's
                  const auto begin = std::chrono::steady_clock::now();
                  LOGConnector::finishAll(begin + std::chrono::seconds(5));
                  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
                  return;
                }
                logNumbers(child, EACH);
                appender.close();
                EXPECT_EQ(static_cast<std::uint64_t>(EACH), appender.getAcknowledged());
              }));
  }
  forking = false;
  parent.join();
  EXPECT_TRUE(acknowledges(static_cast<std::uint64_t>(logged)));
  std::map<int, long> last;
  lastNumbers(Received(server->lines()).texts, last);
  EXPECT_EQ(logged, last[0]);
  for (int child = 1; child <= CHILDREN; ++child) EXPECT_EQ(child % 5 == 0 ? 0 : EACH, last[child]) << child;
}

}  // namespace
