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
  static constexpr int NONE = -1, ANY_PORT = 0;

  struct Options {
    int udpPort = NONE;  // the UDP input: 514 (needs root), another port, or any free one
    std::string udpBuffer = "8m";
    bool relp = false;                // a RELP input without TLS, on a free port
    bool tls = false;                 // a RELP input with TLS, on a free port of its own
    std::string maxData = "64k";      // the longest message of the RELP inputs
    std::string oversize = "";        // "abort" closes the connection on a longer one; it is cut off otherwise
    std::string identity = "server";  // the server's certificate, see Certificates
    bool clientCertificate = false;   // TLS clients have to show a certificate for relp-client
  };

  /// Empty when this machine can run such a daemon, otherwise what is missing: `GTEST_SKIP() << Rsyslog::missing(options)`.
  static std::string missing(const Options& options);
  static bool available(const Options& options) { return missing(options).empty(); }

  /// Picks the ports, makes certificates for TLS and writes the configuration; starts nothing. Whoever wants port 514 waits
  /// until no other test has it.
  explicit Rsyslog(const Options& options);
  /// Kills the daemon when it runs.
  ~Rsyslog();
  Rsyslog(const Rsyslog&) = delete;
  Rsyslog& operator=(const Rsyslog&) = delete;

  /// 0 when there is no such input.
  int udpPort() const { return m_udpPort; }
  int relpPort() const { return m_relpPort; }
  int tlsPort() const { return m_tlsPort; }
  const Certificates& certificates() const { return *m_certificates; }
  const std::string& directory() const { return m_dir.path(); }

  /// Also after kill() or terminate(): on the same ports, adding to what is stored.
  void start();
  /// Until every input has answered: UDP by storing a datagram (not one of lines()), RELP by accepting a session.
  bool waitReady();
  bool startAndWait() {
    start();
    return waitReady();
  }
  /// kill -9; at once.
  void kill();
  /// SIGTERM, which says goodbye to its clients first; takes a second or two.
  void terminate();
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
  bool relpReady() const;
  bool tlsReady() const;
  void signal(int number) const;
  void reap();

  const Options m_options;
  TempDir m_dir;
  std::unique_ptr<Certificates> m_certificates;
  int m_portLock = -1;
  int m_udpPort = 0, m_relpPort = 0, m_tlsPort = 0;
  pid_t m_process = -1;
  int m_starts = 0;
  bool m_probed = false;

  std::size_t m_read = 0;  // bytes of the file that are in m_lines
  std::vector<std::string> m_lines;
};

}  // namespace vrktest
