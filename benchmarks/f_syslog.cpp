// f. Datagrams to a syslog daemon on this machine. The daemon is a thread here that takes them and throws them away.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

#include "benchmarks/Harness.h"
#include "benchmarks/Ours.h"
#include "benchmarks/Peers.h"
#include "log4vrk/net/LOGSyslogAppender.h"

#ifdef LOG4VRK_PEER_SPDLOG
#include <spdlog/sinks/udp_sink.h>
#endif

namespace {

constexpr int PORT = 514;

sockaddr_in daemonAddress() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(PORT);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

class Daemon {
 public:
  Daemon() : m_socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_in address = daemonAddress();
    m_bound = bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    const timeval patience{0, 100'000};
    setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    m_thread = std::thread([this] {
      char datagram[2048];
      while (!m_ending) static_cast<void>(recv(m_socket, datagram, sizeof datagram, 0));
    });
  }
  ~Daemon() {
    m_ending = true;
    m_thread.join();
    close(m_socket);
  }
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  bool bound() const { return m_bound; }

 private:
  const int m_socket;
  bool m_bound = false;
  std::atomic<bool> m_ending{false};
  std::thread m_thread;
};

LOGSyslogAppender* syslog() {
  auto* const appender = new LOGSyslogAppender;
  appender->setLayout(bench::OurLog::layout());
  appender->setSyslogHost("127.0.0.1");
  appender->activateOptions();
  return appender;
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  const Daemon daemon;
  if (!daemon.bound()) {
    std::printf("f is left out: UDP port %d is not to be had (another daemon, or this is not root)\n", PORT);
    return 0;
  }
  const long events = settings.count(100'000);
  const auto perSecond = [events](auto call) { return static_cast<double>(events) / bench::seconds(1, events, call); };

  bench::Comparison comparison(settings, {{"f", "sends/s"}});
  comparison.add("sendto", [&] {
    const int file = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = daemonAddress();
    const std::string datagram = "<14>" + std::string(bench::LINE);
    const double result = perSecond([&](long) {
      static_cast<void>(sendto(file, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr*>(&address),
                               sizeof address));
    });
    close(file);
    return result;
  });
#ifdef LOG4VRK_PEER_SPDLOG
  comparison.add("spdlog", [&] {
    bench::SpdlogLog log(
        std::make_shared<spdlog::sinks::udp_sink_mt>(spdlog::sinks::udp_sink_config("127.0.0.1", PORT)), false);
    return perSecond([&](long i) { log.log(i); });
  });
#endif
  comparison.add("ours", [&] {
    const bench::OurLog log(syslog());
    return perSecond([&](long i) { log.log(i); });
  });
  comparison.gate("f", "ours", "sendto", bench::Comparison::AT_LEAST, 0.93, 1.0);
  comparison.run();
}
