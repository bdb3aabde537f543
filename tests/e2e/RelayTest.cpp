// What a relay is made of: the program that delivers, the one that leaves repetitions out, and all of the example.

#include "tests/support/RelayChain.h"
#include "tests/support/ScriptedLogServer.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

const std::string FORWARD = LOG4VRK_BINARY_DIR "/tools/log4vrk-forward";

std::string event(const std::string& text) { return "<14>1 - - - - - [a b=\"c\"] " + text + "\n"; }

/// log4vrk-forward with that input.
class Forward {
 public:
  Forward(const std::string& options, int port, const std::string& input) {
    m_dir.write("in", input);
    m_process = startProgram({"/bin/sh", "-c",
                              "cd '" + m_dir.path() + "' && exec '" + FORWARD + "' " + options + " " +
                                  std::to_string(port) + " <in >out 2>err"});
  }
  bool says(const std::string& text) const {
    return eventually([&] { return m_dir.read("out") == text; });
  }
  void stop() const {
    ASSERT_EQ(0, ::kill(m_process, SIGSTOP));
    siginfo_t stopped;
    ASSERT_EQ(0, ::waitid(P_PID, static_cast<id_t>(m_process), &stopped, WSTOPPED));
  }
  void resume() const { ASSERT_EQ(0, ::kill(m_process, SIGCONT)); }
  int end() const { return statusOf(m_process); }
  std::string read(const std::string& name) const { return m_dir.read(name); }

 private:
  const TempDir m_dir;
  pid_t m_process = -1;
};

}  // namespace

TEST(ForwardTest, ConfirmsWhatIsAcknowledgedAndNothingElse) {
  const Deadline deadline(60);
  ScriptedLogServer server([](const std::string&) { return ScriptedLogServer::HOLD; });
  server.away = true;
  // The daemon was killed while it wrote the last line.
  const Forward forward("127.0.0.1", server.port(),
                        "BEGIN TRANSACTION\n" + event("1") + event("2") + "COMMIT TRANSACTION\n" + event("3") +
                            event("torn").substr(0, 20));
  const std::string begin = "OK\nOK\nDEFER_COMMIT\nDEFER_COMMIT\n";
  EXPECT_TRUE(forward.says(begin));
  EXPECT_TRUE(eventually([&] { return !forward.read("err").empty(); }));
  server.away = false;
  ASSERT_TRUE(eventually([&] { return server.held() == 2; }));
  server.lets = 1;
  ASSERT_TRUE(eventually([&] { return server.held() == 1; }));
  EXPECT_TRUE(forward.says(begin));
  server.lets = ScriptedLogServer::ALL;
  EXPECT_EQ(0, forward.end());
  EXPECT_TRUE(forward.says(begin + "OK\nOK\n"));
  EXPECT_EQ(Texts({"1", "2", "3"}), server.received());
  EXPECT_NE(std::string::npos, forward.read("err").find(": connected\n")) << forward.read("err");
}

TEST(ForwardTest, ConfirmsWhatIsAcknowledgedWithTheServersLastWord) {
  const Deadline deadline(60);
  auto server = std::make_unique<ScriptedLogServer>([](const std::string&) { return ScriptedLogServer::HOLD; });
  const Forward forward("127.0.0.1", server->port(), event("1"));
  ASSERT_TRUE(eventually([&] { return server->held() == 1; }));
  forward.stop();
  server->lets = ScriptedLogServer::ALL;
  ASSERT_TRUE(eventually([&] { return server->held() == 0; }));
  server.reset();
  forward.resume();
  EXPECT_EQ(0, forward.end());
  EXPECT_TRUE(forward.says("OK\nOK\n"));
}

// Its daemon was killed while the centre was away.
TEST(ForwardTest, EndsWhenNobodyHearsItsConfirmations) {
  const Deadline deadline(60);
  ScriptedLogServer server([](const std::string&) { return ScriptedLogServer::HOLD; });
  const TempDir dir;
  const std::string command = "mkfifo '" + dir.file("confirmations") + "'";
  ASSERT_EQ(0, std::system(command.c_str()));
  const pid_t process = startProgram({"/bin/sh", "-c",
                                      "exec '" + FORWARD + "' 127.0.0.1 " + std::to_string(server.port()) + " <'" +
                                          dir.write("in", event("1")) + "' >'" + dir.file("confirmations") + "'"});
  std::ifstream confirmations(dir.file("confirmations"));
  EXPECT_TRUE(eventually([&] { return server.held() == 1; }));
  confirmations.close();
  EXPECT_EQ(3, statusOf(process));
}

TEST(ForwardTest, SetsAsideWhatTheServerRefusesOrTriesForEver) {
  const Deadline deadline(60);
  std::atomic<int> refusals{3};
  ScriptedLogServer server([&](const std::string& text) {
    return text == "no" && refusals-- > 0 ? ScriptedLogServer::REFUSE : ScriptedLogServer::ACCEPT;
  });
  const std::string input = event("no") + event("yes");
  const Forward patient("127.0.0.1", server.port(), input);
  EXPECT_EQ(0, patient.end());
  EXPECT_EQ(Texts({"no", "no", "no", "no", "yes"}), server.received());
  refusals = 2;
  const Forward forward("--refused aside 127.0.0.1", server.port(), input);
  EXPECT_EQ(0, forward.end());
  EXPECT_EQ("OK\nOK\nOK\n", forward.read("out"));
  EXPECT_EQ(event("no"), forward.read("aside"));
  refusals = 2;
  const Forward unable("--refused /no/such/folder 127.0.0.1", server.port(), input);
  EXPECT_EQ(1, unable.end());
  EXPECT_EQ("OK\n", unable.read("out"));
  EXPECT_EQ(2, Forward("--no-such-option 127.0.0.1", server.port(), "").end());
}

TEST(ForwardTest, DeliversOverTls) {
  const std::string missing = Rsyslog::missing();
  if (!missing.empty()) GTEST_SKIP() << missing;
  const Deadline deadline(60);
  Rsyslog server("server", true);
  ASSERT_TRUE(server.startAndWait());
  const Forward forward("--secure --authorities '" + server.certificate("ca") + "' --certificate '" +
                            server.certificate("client") + "' --key '" + server.key("client") + "' localhost",
                        server.tlsPort(), event("over TLS"));
  EXPECT_EQ(0, forward.end()) << forward.read("err");
  EXPECT_TRUE(eventually([&] { return !server.lines().empty(); }));
  EXPECT_EQ(Texts({event("over TLS").substr(0, event("over TLS").size() - 1)}), server.lines());
}

TEST(OnceTest, LeavesOutRepetitionsAndTornLines) {
  const auto line = [](const char* stream, int sequence) {
    return "{\"stream\":\"" + std::string(stream) + "\",\"sequence\":" + std::to_string(sequence) +
           R"(,"message":"{\"stream\":\"x\",\"sequence\":1}"})" + "\n";
  };
  const TempDir dir;
  std::string in, expected;
  // What a recovery brings late comes once, too.
  for (const int sequence : {7, 8, 9, 8, 7, 12, 10, 12, 11, 10, 11, 3, 2, 1, 2, 13}) in += line("a", sequence);
  for (const int sequence : {7, 8, 9, 12, 10, 11, 3, 2, 1, 13}) expected += line("a", sequence);
  in += line("b", 7) + "no event\n" + line("b", 8).substr(0, 30) + line("b", 8) + line("b", 8) + line("c", 1);
  expected += line("b", 7) + line("b", 8) + line("c", 1);
  in.pop_back();  // is being written
  expected.resize(expected.size() - line("c", 1).size());
  const std::string command =
      "'" LOG4VRK_BINARY_DIR "/examples/relay/once' <'" + dir.write("in", in) + "' >'" + dir.file("out") + "' 2>'";
  EXPECT_EQ(0, std::system((command + dir.file("err") + "'").c_str()));
  EXPECT_EQ(expected, dir.read("out"));
  EXPECT_EQ("12 events, 7 repetitions left out, 3 lines torn\n", dir.read("err"));
}

TEST(RelayTest, LosesNothingWhileRelayAndCentreAreKilled) {
  const std::string missing = Rsyslog::missing();
  if (!missing.empty()) GTEST_SKIP() << missing;
  const Deadline deadline(115);
  constexpr int PROGRAMS = 3, KILLS = 4;
  constexpr long EACH = 1000;
  RelayChain chain;
  EXPECT_TRUE(chain.survive({PROGRAMS, EACH, KILLS, {}}));
  const RelayChain::Outcome outcome = chain.outcome();
  expectEachOnceInOrder(outcome.messages, PROGRAMS, EACH);
  std::printf("%ld events, %d kills each: %ld repeated.\n", PROGRAMS * EACH, KILLS, outcome.repeated);
}
