// A socket that receives what a datagram appender has sent.

#pragma once

#include <poll.h>

#include <string>

#include "tests/support/Sockets.h"

namespace vrktest {

/// A socket on a loopback address, closed again by close().
class UdpReceiver {
 public:
  /// Port 0 is any free one.
  explicit UdpReceiver(const std::string& address = "127.0.0.1", int port = 0)
      : m_port(port), m_descriptor(boundSocket(SOCK_DGRAM, m_port, address)) {
    const int size = 1 << 20;
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
  }
  ~UdpReceiver() { close(); }
  UdpReceiver(const UdpReceiver&) = delete;
  UdpReceiver& operator=(const UdpReceiver&) = delete;

  bool isBound() const { return m_descriptor >= 0; }
  int port() const { return m_port; }
  void close() {
    if (m_descriptor >= 0) ::close(m_descriptor);
    m_descriptor = -1;
  }

  /// The next datagram; "(nothing)" when none comes in ten seconds.
  std::string next() { return take(10000); }
  /// Takes what is there; loopback delivers before a send returns.
  bool isEmpty() { return take(0) == "(nothing)"; }

 private:
  const std::string& take(int milliseconds) {
    pollfd waiting{m_descriptor, POLLIN, 0};
    if (::poll(&waiting, 1, milliseconds) != 1) return m_last = "(nothing)";
    m_last.assign(70000, '\0');
    const ssize_t count = ::recv(m_descriptor, m_last.data(), m_last.size(), 0);
    m_last.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return m_last;
  }

  int m_port;
  int m_descriptor;
  std::string m_last;
};

}  // namespace vrktest
