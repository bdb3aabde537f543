// A real rsyslogd that belongs to one test, which logs to it, stops it, kills it and starts it again.

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "tests/support/TempDir.h"

namespace vrktest {

/// A TCP port of 127.0.0.1 that nobody uses, and that other tests leave alone while this lasts. Raises when there is
/// none.
class FreePort {
 public:
  FreePort();
  ~FreePort();
  FreePort(const FreePort&) = delete;
  FreePort& operator=(const FreePort&) = delete;

  int number() const { return m_number; }
  std::string text() const { return std::to_string(m_number); }
  /// Whether somebody listens on it. Connects to nobody.
  bool isOpen() const;

 private:
  int m_number = 0;
  int m_reservation = -1;  // a socket by which other tests leave the port alone
};

/// A daemon in the foreground with a directory of its own. It stores every message that its inputs accept as one line:
/// the message as it came, from the PRI on, control characters as #ooo (octal).
///
/// Thread safety: not thread-safe. The daemon dies with the thread that started it: start it on the test's main thread.
/// Errors: operations that fail add a failure to the test; the constructor raises when there are no certificates.
class Rsyslog {
 public:
  /// Empty when this machine can run such a daemon, otherwise what is missing, for GTEST_SKIP().
  static std::string missing();

  /// Picks the ports and makes certificates; starts nothing. `identity` is the certificate that the server shows. When
  /// `clientCertificate`, clients have to show one for relp-client.
  explicit Rsyslog(const std::string& identity = "server", bool clientCertificate = false);
  /// Kills the daemon when it runs.
  ~Rsyslog();
  Rsyslog(const Rsyslog&) = delete;
  Rsyslog& operator=(const Rsyslog&) = delete;

  /// Of 127.0.0.1, without TLS and with it.
  int relpPort() const { return m_ports[0].number(); }
  int tlsPort() const { return m_ports[1].number(); }
  /// There are an authority, "ca", and what it has signed: "server" (for localhost and 127.0.0.1), "expired"
  /// (the same, but no longer valid), "other" (for other.example), "bare" (with localhost as its common name only),
  /// "client" (for relp-client). Keys have no password; "locked" is that of "client" with one.
  std::string certificate(const std::string& name) const { return m_dir.file(name + ".pem"); }
  std::string key(const std::string& name) const { return m_dir.file(name + ".key"); }

  /// Also after kill(): on the same ports, adding to what is stored.
  void start();
  /// Until it listens on every port.
  bool startAndWait();
  /// kill -9; at once.
  void kill();
  /// SIGSTOP and SIGCONT.
  void stop() const;
  void resume() const;

  /// What is stored, in order; a line that is being written is left out.
  const std::vector<std::string>& lines();

 private:
  const TempDir m_dir;
  const FreePort m_ports[2];
  pid_t m_process = -1;

  long m_read = 0;  // bytes of the file that are in m_lines
  std::vector<std::string> m_lines;
};

}  // namespace vrktest
