#include "tests/support/Rsyslog.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>

#include "tests/support/Logs.h"
#include "tests/support/Process.h"
#include "tests/support/Sockets.h"

namespace vrktest {

namespace {

constexpr const char *DAEMON = "/usr/sbin/rsyslogd", *LOOPBACK = "127.0.0.1";

constexpr const char* CONFIGURATION = R"(global(workDirectory="@DIR@" maxMessageSize="64k" net.enableDNS="off")
template(name="raw" type="list") { property(name="rawmsg") constant(value="\n") }
ruleset(name="all" queue.type="Direct") { action(type="omfile" template="raw" file="@DIR@/all.log") }
action(type="omfile" file="@DIR@/internal.log")
module(load="imrelp" tls.tlslib="openssl")
input(type="imrelp" port="@RELP@" address="127.0.0.1" ruleset="all" maxDataSize="64k")
input(type="imrelp" port="@TLS@" address="127.0.0.1" ruleset="all" maxDataSize="64k" tls="on"
      tls.cacert="@DIR@/ca.pem" tls.mycert="@DIR@/@IDENTITY@.pem" tls.myprivkey="@DIR@/@IDENTITY@.key" @CLIENTS@)
)";

constexpr const char* CERTIFICATES = R"(set -e
new='-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes'
openssl req -x509 -days 2 -subj /CN=ca $new -keyout ca.key -out ca.pem
sign() {  # name, host, alternative names, days
  openssl req -subj /CN=$2 -addext subjectAltName=$3 -addext basicConstraints=CA:FALSE $new -keyout $1.key -out $1.csr
  openssl x509 -req -in $1.csr -CA ca.pem -CAkey ca.key -CAcreateserial -copy_extensions copy -days $4 -out $1.pem
}
sign server localhost DNS:localhost,IP:127.0.0.1 2
sign expired localhost DNS:localhost,IP:127.0.0.1 -1
sign other other.example DNS:other.example 2
sign bare localhost email:nobody@example.com 2
sign client relp-client DNS:relp-client 2
openssl pkey -in client.key -aes256 -passout pass:secret -out locked.key
)";

bool runs(const std::string& command) { return std::system(("(" + command + ") >/dev/null 2>&1").c_str()) == 0; }

// Without sending anything, which the daemon would store or complain about.
bool isOpen(int port) {
  char withoutPeer[64];
  std::snprintf(withoutPeer, sizeof withoutPeer, " %08X:%04X 00000000:0000 ", ::inet_addr(LOOPBACK),
                static_cast<unsigned>(port));
  return fileText("/proc/net/tcp").find(withoutPeer) != std::string::npos;
}

}  // namespace

// Below the ports that the system gives to whoever connects.
FreePort::FreePort() {
  std::random_device random;
  for (int i = 0; i < 1000; ++i) {
    m_number = 12000 + static_cast<int>(random() % 20000);
    m_reservation = boundSocket(SOCK_DGRAM, m_number);
    if (m_reservation < 0) continue;
    const int free = boundSocket(SOCK_STREAM, m_number);
    ::close(free >= 0 ? free : m_reservation);
    if (free >= 0) return;
  }
  throw std::runtime_error("no free port");
}

FreePort::~FreePort() { ::close(m_reservation); }

bool FreePort::isOpen() const { return vrktest::isOpen(m_number); }

std::string Rsyslog::missing() {
  if (::access(DAEMON, X_OK) != 0) return "rsyslogd is not installed (Debian package rsyslog)";
  if (!runs("ls /usr/lib*/rsyslog/imrelp.so || ls /usr/lib/*/rsyslog/imrelp.so"))
    return "imrelp is not installed (Debian package rsyslog-relp)";
  return runs("openssl version") ? "" : "openssl is not installed (Debian package openssl)";
}

Rsyslog::Rsyslog(const std::string& identity, bool clientCertificate) {
  m_dir.write("make", CERTIFICATES);
  if (!runs("cd '" + m_dir.path() + "' && sh make")) throw std::runtime_error("no certificates");
  std::string text = CONFIGURATION;
  const std::pair<const char*, std::string> VALUES[] = {
      {"@DIR@", m_dir.path()},
      {"@RELP@", std::to_string(relpPort())},
      {"@TLS@", std::to_string(tlsPort())},
      {"@IDENTITY@", identity},
      {"@CLIENTS@", clientCertificate ? "tls.authmode=\"name\" tls.permittedpeer=[\"relp-client\"]" : ""}};
  for (const auto& [name, value] : VALUES) text = replaced(text, name, value);
  m_dir.write("rsyslog.conf", text);
}

Rsyslog::~Rsyslog() {
  if (m_process > 0) kill();
}

// One that was killed leaves its pid file behind.
void Rsyslog::start() {
  m_process = startProgram(
      {"/bin/sh", "-c",
       "cd " + m_dir.path() + " && rm -f pid && exec " + DAEMON + " -n -f $PWD/rsyslog.conf -i $PWD/pid 2>>stderr"});
}

bool Rsyslog::startAndWait() {
  start();
  const bool ready = eventually([&] { return m_ports[0].isOpen() && m_ports[1].isOpen(); });
  EXPECT_TRUE(ready) << "rsyslogd is not ready: " << m_dir.read("internal.log") << m_dir.read("stderr");
  return ready;
}

void Rsyslog::kill() {
  EXPECT_EQ(0, ::kill(m_process, SIGKILL));
  statusOf(m_process);
  m_process = -1;
}

// A busy machine lets its threads run on for a while after the signal is sent.
void Rsyslog::stop() const {
  ASSERT_EQ(0, ::kill(m_process, SIGSTOP));
  siginfo_t stopped;
  ASSERT_EQ(0, ::waitid(P_PID, static_cast<id_t>(m_process), &stopped, WSTOPPED));
}

void Rsyslog::resume() const { ASSERT_EQ(0, ::kill(m_process, SIGCONT)); }

const std::vector<std::string>& Rsyslog::lines() {
  std::ifstream in(m_dir.file("all.log"), std::ios::binary);
  in.seekg(m_read);
  for (std::string line; std::getline(in, line) && !in.eof();) {
    m_read += static_cast<long>(line.size()) + 1;
    m_lines.push_back(line);
  }
  return m_lines;
}

}  // namespace vrktest
