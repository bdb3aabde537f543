#include "log4vrk/platform/internal/VRKDatagramSocket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "log4vrk/platform/internal/VRKFault.h"

namespace {

const sockaddr* systemForm(const VRKSocketAddress& address) {
  return static_cast<const sockaddr*>(address.getAddress());
}

// Errors that a second attempt would meet again: no room for the datagram, a datagram too large, or no socket.
bool isFinal(int error) { return error == EAGAIN || error == EMSGSIZE || error == ENOBUFS || error == EBADF; }

}  // namespace

VRKDatagramSocket::~VRKDatagramSocket() { close(); }

VRKDatagramSocket::VRKDatagramSocket(const VRKDatagramSocket& other)
    : m_descriptor(other.isOpen() ? ::fcntl(other.m_descriptor, F_DUPFD_CLOEXEC, 0) : -1),
      m_connected(other.m_connected),
      m_destination(other.m_destination) {}

VRKDatagramSocket::VRKDatagramSocket(VRKDatagramSocket&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)),
      m_connected(other.m_connected),
      m_destination(std::move(other.m_destination)) {}

VRKDatagramSocket& VRKDatagramSocket::operator=(VRKDatagramSocket other) noexcept {
  std::swap(m_descriptor, other.m_descriptor);
  std::swap(m_connected, other.m_connected);
  std::swap(m_destination, other.m_destination);
  return *this;
}

bool VRKDatagramSocket::open(const VRKSocketAddress& local) {
  close();
  if (VRKFault::hit(VRKFault::SOCKET_OPEN) || !local.isValid()) return false;
  m_descriptor = ::socket(local.getFamily(), SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (m_descriptor < 0) return false;
  if (::bind(m_descriptor, systemForm(local), local.getLength()) == 0) return true;
  close();
  return false;
}

bool VRKDatagramSocket::setBufferSizes(int bytes) {
  return ::setsockopt(m_descriptor, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof(bytes)) == 0 &&
         ::setsockopt(m_descriptor, SOL_SOCKET, SO_SNDBUF, &bytes, sizeof(bytes)) == 0;
}

bool VRKDatagramSocket::setNonBlocking() {
  if (VRKFault::hit(VRKFault::SOCKET_MODE)) return false;
  const int flags = ::fcntl(m_descriptor, F_GETFL);
  return flags >= 0 && ::fcntl(m_descriptor, F_SETFL, flags | O_NONBLOCK) == 0;
}

void VRKDatagramSocket::setDestination(const VRKSocketAddress& destination) {
  m_destination = destination;
  connect();
}

// Takes the old destination away first. Only then does the system choose route and source address anew, by the network
// as it is now. Where connecting fails, send() names the destination for each datagram.
void VRKDatagramSocket::connect() {
  sockaddr none = {};
  none.sa_family = AF_UNSPEC;
  static_cast<void>(::connect(m_descriptor, &none, sizeof(none)));
  m_connected =
      m_destination.isValid() && ::connect(m_descriptor, systemForm(m_destination), m_destination.getLength()) == 0;
}

[[gnu::always_inline]] inline bool VRKDatagramSocket::sendOnce(const void* bytes, std::size_t count) {
  const ssize_t sent =
      m_connected ? ::send(m_descriptor, bytes, count, 0)
                  : ::sendto(m_descriptor, bytes, count, 0, systemForm(m_destination), m_destination.getLength());
  return sent >= 0;
}

bool VRKDatagramSocket::send(const void* bytes, std::size_t count) {
  if (!m_destination.isValid()) return false;
  if (sendOnce(bytes, count)) return true;
  if (isFinal(errno)) return false;
  // A connected socket reports what an unconnected one would not: that nobody heard an earlier datagram, or that its
  // source address is gone because the network has changed. Neither may cost this datagram, so it is sent once more. In
  // the first case reporting has cleared the error; in the second the socket has to be connected again.
  if (errno != ECONNREFUSED) connect();
  return sendOnce(bytes, count);
}

void VRKDatagramSocket::close() {
  if (m_descriptor >= 0) ::close(m_descriptor);
  m_descriptor = -1;
  m_connected = false;
}
