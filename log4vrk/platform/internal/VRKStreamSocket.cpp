#include "log4vrk/platform/internal/VRKStreamSocket.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "log4vrk/platform/internal/VRKErrorText.h"

namespace {

constexpr int ON = 1;
// Seconds of silence until a peer is asked whether it is there, between two questions, and how many stay unanswered.
constexpr int IDLE_BEFORE_PROBES = 30;
constexpr int BETWEEN_PROBES = 10;
constexpr int PROBES = 3;
// Milliseconds that sent bytes may stay unacknowledged by the peer's kernel.
constexpr unsigned LONGEST_SILENCE = 60000;

template <typename Value>
void set(int descriptor, int level, int option, Value value) {
  // A kernel that refuses one of them serves with its own setting.
  ::setsockopt(descriptor, level, option, &value, sizeof value);
}

void configure(int descriptor) {
  set(descriptor, IPPROTO_TCP, TCP_NODELAY, ON);
  set(descriptor, SOL_SOCKET, SO_KEEPALIVE, ON);
  set(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, IDLE_BEFORE_PROBES);
  set(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, BETWEEN_PROBES);
  set(descriptor, IPPROTO_TCP, TCP_KEEPCNT, PROBES);
  set(descriptor, IPPROTO_TCP, TCP_USER_TIMEOUT, LONGEST_SILENCE);
}

bool isForLater(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

}  // namespace

VRKStreamSocket::~VRKStreamSocket() { close(); }

void VRKStreamSocket::close() {
  if (m_descriptor >= 0) ::close(m_descriptor);
  m_descriptor = -1;
}

VRKStream::Progress VRKStreamSocket::advance() {
  if (m_connected) return READY;
  for (;;) {
    const Progress progress = m_descriptor >= 0 ? attempt() : FAILED;
    if (progress != FAILED) return progress;
    close();
    if (m_next == m_addresses.size()) break;
    begin(m_addresses[m_next++]);
  }
  if (m_failure.empty()) m_failure = "there is no address to connect to";
  return FAILED;
}

// False, without a descriptor, when it fails at once.
bool VRKStreamSocket::begin(const VRKSocketAddress& address) {
  m_deadline = std::chrono::steady_clock::now() + LONGEST_ATTEMPT;
  m_descriptor = ::socket(address.getFamily(), SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, IPPROTO_TCP);
  if (m_descriptor >= 0) {
    configure(m_descriptor);
    if (::connect(m_descriptor, static_cast<const sockaddr*>(address.getAddress()), address.getLength()) == 0 ||
        errno == EINPROGRESS) {
      return true;
    }
  }
  m_failure = vrkErrorText(errno);
  close();
  return false;
}

VRKStream::Progress VRKStreamSocket::attempt() {
  pollfd waiting{m_descriptor, POLLOUT, 0};
  if (::poll(&waiting, 1, 0) <= 0) {
    if (std::chrono::steady_clock::now() < m_deadline) return PENDING;
    m_failure = vrkErrorText(ETIMEDOUT);
    return FAILED;
  }
  int error = 0;
  socklen_t size = sizeof error;
  if (::getsockopt(m_descriptor, SOL_SOCKET, SO_ERROR, &error, &size) != 0) error = errno;
  if (error != 0) {
    m_failure = vrkErrorText(error);
    return FAILED;
  }
  m_connected = true;
  m_failure.clear();
  return READY;
}

long VRKStreamSocket::read(char* buffer, std::size_t size) {
  const ssize_t count = ::recv(m_descriptor, buffer, size, 0);
  if (count > 0) return count;
  if (count == 0) return over(0);
  return isForLater(errno) ? 0 : over(errno);
}

long VRKStreamSocket::write(const char* bytes, std::size_t count) {
  const ssize_t taken = ::send(m_descriptor, bytes, count, MSG_NOSIGNAL);
  if (taken >= 0) return taken;
  return isForLater(errno) ? 0 : over(errno);
}

long VRKStreamSocket::over(int error) {
  m_failure = error == 0 ? "the server ended the connection" : vrkErrorText(error);
  return -1;
}
