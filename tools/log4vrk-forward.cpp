// Delivers what rsyslog's omprog hands to it to another log server, and confirms what that has acknowledged.
// docs/many-machines.md says why.

#include <getopt.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "log4vrk/net/internal/LOGConnection.h"
#include "log4vrk/net/internal/LOGRelpSession.h"
#include "log4vrk/platform/internal/VRKWakeUp.h"

namespace {

constexpr int WRONG_USE = 2, UNHEARD = 3;

constexpr const char* HELP = R"(usage: log4vrk-forward [options] HOST PORT

Reads events from standard input, a line each, and delivers them over RELP to the log server HOST. It is a program for
rsyslog's omprog with confirmMessages="on", and useTransactions="on" or "off": it confirms an event, or a transaction,
when the server has acknowledged it, and until then it connects again and again. It keeps nothing: what it has not
confirmed is still rsyslog's. In memory it has 128 events, 1 MiB and one more at most.

  --secure            over TLS; the server's certificate has to name HOST
  --authorities FILE  those that the server's certificate may come from, instead of the system's
  --certificate FILE  what to show to a server that asks for a certificate
  --key FILE          its key, where it is not in the same file
  --refused FILE      where to put events that the server refuses twice. Without it they are tried for ever.
  --help              show this

Says on standard error when the server is lost and found. Exit status: 0 at the end of the input; 1 when the file of
refused events cannot be written; 2 for a wrong use; 3 when nobody hears its confirmations any more.
)";

/// Events on their way to the server.
///
/// Errors: raises what the system has no room for.
class Forwarder {
 public:
  Forwarder(LOGLogServer server, std::string refused)
      : m_server(std::move(server)), m_refused(std::move(refused)), m_wakeUp(std::make_shared<VRKWakeUp>()) {}

  /// Waits until there is room for it.
  void add(std::string text) {
    while (!m_session.hasRoom()) step();
    LOGOutgoing event;
    event.text = std::move(text);
    m_session.add(std::move(event));
  }
  /// Waits until everything has been answered.
  void deliver() {
    while (!m_session.unanswered().empty()) step();
    if (m_connection) m_connection->step();  // sees that there is nothing to wait for
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds FIRST_DELAY{20}, LONGEST_DELAY{1000};

  // Goes as far as it gets, and waits for more. A daemon that has ended keeps what was not confirmed, and starts a
  // program of its own next time.
  void step() {
    pollfd confirmations{STDOUT_FILENO, 0, 0};
    if (::poll(&confirmations, 1, 0) > 0 && (confirmations.revents & POLLERR) != 0) std::exit(UNHEARD);
    if (!m_connection) {
      m_wakeUp->wait(-1, false, std::chrono::ceil<std::chrono::milliseconds>(m_next - Clock::now()).count());
      if (Clock::now() < m_next) return;
      m_connection = std::make_unique<LOGConnection>(m_server, m_session, m_wakeUp);
    }
    m_connection->step();
    const bool moved = takeAnswered();
    if (m_session.state() == LOGRelpSession::READY && m_lost) say("connected");
    if (m_connection->isOver()) return lose();
    if (moved || m_connection->hasMore()) return;
    const auto left = std::min<Clock::duration>(m_connection->deadline() - Clock::now(), LONGEST_DELAY);
    m_wakeUp->wait(m_connection->descriptor(), m_connection->hasToWrite(),
                   std::chrono::ceil<std::chrono::milliseconds>(left).count());
  }

  bool takeAnswered() {
    bool moved = false;
    for (LOGOutgoing event; m_session.takeAnswered(event); moved = true) {
      m_delay = FIRST_DELAY;
      if (event.answer != LOGOutgoing::REFUSED) continue;
      std::fprintf(stderr, "log4vrk-forward: %s refuses an event\n", m_server.name().c_str());
      if (m_refused.empty()) {
        event.answer = LOGOutgoing::NONE;
        event.number = 0;
        m_session.add(std::move(event));
        m_wakeUp->wait(-1, false, LONGEST_DELAY.count());
      } else if (!(std::ofstream(m_refused, std::ios::app) << event.text << std::endl)) {
        std::fprintf(stderr, "log4vrk-forward: %s cannot be written\n", m_refused.c_str());
        std::exit(EXIT_FAILURE);
      }
    }
    return moved;
  }

  void lose() {
    if (!m_lost) say(m_connection->reason().c_str());
    m_connection.reset();
    m_session.interrupt();
    m_next = Clock::now() + m_delay;
    m_delay = std::min(m_delay * 2, LONGEST_DELAY);
  }

  // Once for each time that it is lost, and found again.
  void say(const char* what) {
    m_lost = !m_lost;
    std::fprintf(stderr, "log4vrk-forward: %s: %s\n", m_server.name().c_str(), what);
  }

  const LOGLogServer m_server;
  const std::string m_refused;
  const std::shared_ptr<VRKWakeUp> m_wakeUp;
  LOGRelpSession m_session;
  std::unique_ptr<LOGConnection> m_connection;
  Clock::time_point m_next;
  std::chrono::milliseconds m_delay = FIRST_DELAY;
  bool m_lost = false;
};

// An incomplete line at the end is of a daemon that was killed, which has the whole one.
void run(Forwarder& forwarder) {
  const auto confirm = [](const char* how) { std::cout << how << std::endl; };
  bool transaction = false;
  confirm("OK");
  for (std::string line; std::getline(std::cin, line) && !std::cin.eof();) {
    if (line == "BEGIN TRANSACTION") {
      transaction = true;
      confirm("OK");
    } else if (line == "COMMIT TRANSACTION") {
      transaction = false;
      forwarder.deliver();
      confirm("OK");
    } else {
      forwarder.add(std::move(line));
      if (!transaction) forwarder.deliver();
      confirm(transaction ? "DEFER_COMMIT" : "OK");
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  static const option OPTIONS[] = {{"secure", no_argument, nullptr, 's'},
                                   {"authorities", required_argument, nullptr, 'a'},
                                   {"certificate", required_argument, nullptr, 'c'},
                                   {"key", required_argument, nullptr, 'k'},
                                   {"refused", required_argument, nullptr, 'r'},
                                   {"help", no_argument, nullptr, 'h'},
                                   {nullptr, 0, nullptr, 0}};
  LOGLogServer server;
  std::string refused;
  for (int letter; (letter = ::getopt_long(argc, argv, "", OPTIONS, nullptr)) != -1;) {
    switch (letter) {
      case 's':
        server.secure = true;
        break;
      case 'a':
        server.tls.authorities = optarg;
        break;
      case 'c':
        server.tls.certificate = optarg;
        break;
      case 'k':
        server.tls.key = optarg;
        break;
      case 'r':
        refused = optarg;
        break;
      case 'h':
        std::fputs(HELP, stdout);
        return 0;
      default:
        std::fputs(HELP, stderr);
        return WRONG_USE;
    }
  }
  if (argc - optind == 2) server.port = std::strtol(argv[optind + 1], nullptr, 10);
  if (server.port < 1 || server.port > 65535) {
    std::fputs(HELP, stderr);
    return WRONG_USE;
  }
  server.host = argv[optind];
  std::signal(SIGPIPE, SIG_IGN);
  Forwarder forwarder(server, refused);
  run(forwarder);
  return 0;
}
