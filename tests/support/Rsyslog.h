// A real rsyslogd of a test's own: a syslog server that the tests log to, stop, kill and start again.

#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/Certificates.h"
#include "tests/support/TempDir.h"

namespace vrktest {

/// A daemon in the foreground, listening on 127.0.0.1, with a directory, a work directory and ports of its own. It stores
/// every message that any of its inputs accepts as one line: the message as it came, from the PRI on, control characters
/// as #ooo (octal).
///
/// Thread safety: not thread-safe. The daemon dies with the thread that started it: start it on the test's main thread.
/// Errors: operations that fail add a failure to the test; the constructor raises when there are no certificates.
class Rsyslog {
 public:
  struct Options {
    int udpPort = 0;                  // the UDP input, 0 for none; below 1024 needs root
    bool relp = false;                // a RELP input without TLS, on a free port
    bool tls = false;                 // a RELP input with TLS, on a free port of its own
    std::string identity = "server";  // the server's certificate, see Certificates
    bool clientCertificate = false;   // TLS clients have to show a certificate for relp-client
  };

  /// Empty when this machine can run such a daemon, otherwise what is missing: `GTEST_SKIP() << Rsyslog::missing(options)`.
  static std::string missing(const Options& options);

  /// Picks the ports, makes certificates for TLS and writes the configuration; starts nothing. Whoever wants a UDP port
  /// waits until no other test has it.
  explicit Rsyslog(const Options& options);
  /// Kills the daemon when it runs.
  ~Rsyslog();
  Rsyslog(const Rsyslog&) = delete;
  Rsyslog& operator=(const Rsyslog&) = delete;

  /// 0 when there is no such input.
  int relpPort() const { return m_relpPort; }
  int tlsPort() const { return m_tlsPort; }
  const Certificates& certificates() const { return *m_certificates; }

  /// Also after kill(): on the same ports, adding to what is stored.
  void start();
  /// Until every input has answered: UDP by storing a datagram (not one of lines()), RELP by accepting a connection.
  bool waitReady();
  bool startAndWait() {
    start();
    return waitReady();
  }
  /// kill -9; at once.
  void kill();
  /// SIGSTOP and SIGCONT.
  void stop();
  void resume();
  bool running() const { return m_process > 0; }

  /// What is stored, in order; a line that is being written is left out.
  const std::vector<std::string>& lines();
  /// Waits until there are so many lines, or the time is up. Then what there is.
  const std::vector<std::string>& waitForLines(std::size_t count, int seconds = 10);
  /// What the daemon has to say about itself, for the message of a failed expectation.
  std::string messages() const { return m_dir.read("internal.log"); }

 private:
  std::string configuration() const;
  bool udpReady();
  void signal(int number) const;

  const Options m_options;
  TempDir m_dir;
  std::unique_ptr<Certificates> m_certificates;
  int m_portLock = -1;
  int m_relpPort = 0, m_tlsPort = 0;
  pid_t m_process = -1;
  int m_starts = 0;
  bool m_probed = false;

  std::size_t m_read = 0;  // bytes of the file that are in m_lines
  std::vector<std::string> m_lines;
};

}  // namespace vrktest
