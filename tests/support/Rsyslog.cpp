#include "tests/support/Rsyslog.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tests/support/Process.h"

namespace vrktest {

namespace {

constexpr const char* DAEMON = "/usr/sbin/rsyslogd";
constexpr const char* PROBE = "vrktest-is-it-ready";

bool has(const std::string& program) { return std::system(("command -v " + program + " >/dev/null").c_str()) == 0; }

bool hasRelpInput() {
  return std::system("ls /usr/lib*/rsyslog/imrelp.so /usr/lib/*/rsyslog/imrelp.so 2>&- | grep -q .") == 0;
}

class Socket {
 public:
  explicit Socket(int type) : m_descriptor(::socket(AF_INET, type | SOCK_CLOEXEC, 0)) {}
  ~Socket() { ::close(m_descriptor); }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  bool connect(int port) {
    const sockaddr_in address = loopback(port);
    return ::connect(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  void send(const std::string& text) { ::send(m_descriptor, text.data(), text.size(), MSG_NOSIGNAL); }
  int freePort() {
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    if (::bind(m_descriptor, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::getsockname(m_descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
      throw std::runtime_error("no free port");
    }
    return ntohs(address.sin_port);
  }

 private:
  static sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<in_port_t>(port));
    return address;
  }

  int m_descriptor;
};

}  // namespace

std::string Rsyslog::missing(const Options& options) {
  if (::access(DAEMON, X_OK) != 0) return "rsyslogd is not installed (Debian package rsyslog)";
  if ((options.relp || options.tls) && !hasRelpInput()) return "imrelp is not installed (Debian package rsyslog-relp)";
  if (options.tls && !has("openssl")) return "openssl is not installed";
  if (!has("setpriv")) return "setpriv is not installed (Debian package util-linux)";
  if (options.udpPort != 0 && options.udpPort < 1024 && ::geteuid() != 0) return "a port below 1024 needs root";
  return "";
}

Rsyslog::Rsyslog(const Options& options) : m_options(options) {
  if (m_options.udpPort != 0) {  // tests run side by side
    m_portLock = ::open(("/tmp/log4vrk-test-udp-" + std::to_string(m_options.udpPort)).c_str(),
                        O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (m_portLock < 0 || ::flock(m_portLock, LOCK_EX) != 0) throw std::runtime_error("no lock for the port");
  }
  Socket relp(SOCK_STREAM), tls(SOCK_STREAM);  // bound at once, so that the ports differ
  if (m_options.relp) m_relpPort = relp.freePort();
  if (m_options.tls) m_tlsPort = tls.freePort();
  if (m_options.tls) m_certificates = std::make_unique<Certificates>();
  std::filesystem::create_directory(m_dir.file("work"));
  m_dir.write("rsyslog.conf", configuration());
}

Rsyslog::~Rsyslog() {
  if (running()) kill();
  if (m_portLock >= 0) ::close(m_portLock);
}

std::string Rsyslog::configuration() const {
  const std::string relp = " address=\"127.0.0.1\" ruleset=\"all\" maxDataSize=\"64k\"";
  std::string text = "global(workDirectory=\"" + m_dir.file("work") +
                     "\" maxMessageSize=\"64k\" net.enableDNS=\"off\" processInternalMessages=\"on\")\n"
                     "template(name=\"raw\" type=\"list\") { property(name=\"rawmsg\") constant(value=\"\\n\") }\n"
                     "ruleset(name=\"all\" queue.type=\"Direct\") { action(type=\"omfile\" template=\"raw\" file=\"" +
                     m_dir.file("all.log") + "\" fileCreateMode=\"0600\") }\n";
  if (m_options.udpPort != 0) {
    text += "module(load=\"imudp\")\ninput(type=\"imudp\" address=\"127.0.0.1\" ruleset=\"all\" port=\"" +
            std::to_string(m_options.udpPort) + "\" rcvbufSize=\"8m\")\n";
  }
  if (m_relpPort || m_tlsPort) text += "module(load=\"imrelp\" tls.tlslib=\"openssl\")\n";
  if (m_relpPort) text += "input(type=\"imrelp\" port=\"" + std::to_string(m_relpPort) + "\"" + relp + ")\n";
  if (m_tlsPort) {
    text += "input(type=\"imrelp\" port=\"" + std::to_string(m_tlsPort) + "\"" + relp + " tls=\"on\" tls.cacert=\"" +
            m_certificates->certificate("ca") + "\" tls.mycert=\"" + m_certificates->certificate(m_options.identity) +
            "\" tls.myprivkey=\"" + m_certificates->key(m_options.identity) + "\"";
    if (m_options.clientCertificate) text += " tls.authmode=\"name\" tls.permittedpeer=[\"relp-client\"]";
    text += ")\n";
  }
  return text + "action(type=\"omfile\" file=\"" + m_dir.file("internal.log") + "\" fileCreateMode=\"0600\")\n";
}

void Rsyslog::start() {
  ASSERT_FALSE(running());
  std::filesystem::remove(m_dir.file("pid"));  // one that was killed leaves it behind
  const std::string configurationFile = m_dir.file("rsyslog.conf"), pidFile = m_dir.file("pid");
  // setpriv becomes the daemon, and sees to it that a test that crashes leaves none behind.
  const char* arguments[] = {"setpriv", "--pdeathsig",   "KILL", DAEMON, "-n", "-f", configurationFile.c_str(),
                             "-i",      pidFile.c_str(), nullptr};
  posix_spawn_file_actions_t files;
  ::posix_spawn_file_actions_init(&files);
  ::posix_spawn_file_actions_addopen(&files, STDERR_FILENO, m_dir.file("stderr").c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                     0600);
  const int error =
      ::posix_spawnp(&m_process, arguments[0], &files, nullptr, const_cast<char* const*>(arguments), environ);
  ::posix_spawn_file_actions_destroy(&files);
  if (error != 0) m_process = -1;
  ASSERT_EQ(0, error);
  ++m_starts;
  m_probed = false;
}

bool Rsyslog::waitReady() {
  const auto accepts = [](int port) { return port == 0 || Socket(SOCK_STREAM).connect(port); };
  const bool ready =
      eventually([&] { return (m_options.udpPort == 0 || udpReady()) && accepts(m_relpPort) && accepts(m_tlsPort); });
  EXPECT_TRUE(ready) << "rsyslogd is not ready: " << messages() << m_dir.read("stderr");
  return ready;
}

bool Rsyslog::udpReady() {
  lines();
  if (m_probed) return true;
  Socket socket(SOCK_DGRAM);
  if (socket.connect(m_options.udpPort))
    socket.send("<14>" + std::string(PROBE) + " " + std::to_string(m_starts) + " ");
  return false;  // the next look finds it
}

void Rsyslog::signal(int number) const {
  ASSERT_TRUE(running());
  ASSERT_EQ(0, ::kill(m_process, number));
}

void Rsyslog::kill() {
  signal(SIGKILL);
  statusOf(m_process);
  m_process = -1;
}

// A busy machine lets its threads run on for a while after the signal is sent.
void Rsyslog::stop() {
  signal(SIGSTOP);
  siginfo_t stopped;
  ASSERT_EQ(0, ::waitid(P_PID, static_cast<id_t>(m_process), &stopped, WSTOPPED));
}

void Rsyslog::resume() { signal(SIGCONT); }

const std::vector<std::string>& Rsyslog::lines() {
  std::ifstream in(m_dir.file("all.log"), std::ios::binary);
  in.seekg(static_cast<std::streamoff>(m_read));
  const std::string more{std::istreambuf_iterator<char>(in), {}};
  std::size_t begin = 0;
  for (std::size_t end; (end = more.find('\n', begin)) != std::string::npos; begin = end + 1) {
    const std::string line = more.substr(begin, end - begin);
    if (line.find(PROBE) == std::string::npos) {
      m_lines.push_back(line);
    } else if (line.find(" " + std::to_string(m_starts) + " ") != std::string::npos) {
      m_probed = true;
    }
  }
  m_read += begin;
  return m_lines;
}

const std::vector<std::string>& Rsyslog::waitForLines(std::size_t count, int seconds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (lines().size() < count && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return m_lines;
}

}  // namespace vrktest
