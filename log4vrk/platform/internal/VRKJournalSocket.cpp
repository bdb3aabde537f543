#include "log4vrk/platform/internal/VRKJournalSocket.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds LONGEST_WAIT(2);

// The entry in a file in memory that nobody can change any more, as the journal demands. -1 with errno on failure.
int sealedFile(std::string_view entry) {
  const int file = ::memfd_create("journal-entry", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  if (file < 0) return -1;
  while (!entry.empty()) {
    const ssize_t written = ::write(file, entry.data(), entry.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) break;
    entry.remove_prefix(static_cast<std::size_t>(written));
  }
  constexpr int SEALS = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
  if (entry.empty() && ::fcntl(file, F_ADD_SEALS, SEALS) == 0) return file;
  const int error = errno;
  ::close(file);
  errno = error;
  return -1;
}

}  // namespace

VRKJournalSocket::~VRKJournalSocket() { close(); }

// The address goes with each entry: a journal that has been started anew is found without a look at the old one.
int VRKJournalSocket::sendOnce(const std::string& path, std::string_view entry, int file) const {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return ENAMETOOLONG;
  std::memcpy(address.sun_path, path.c_str(), path.size());
  iovec bytes = {const_cast<char*>(entry.data()), entry.size()};
  msghdr message = {};
  message.msg_name = &address;
  message.msg_namelen = sizeof address;
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof file)] = {};
  if (file >= 0) {
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof file);
    std::memcpy(CMSG_DATA(header), &file, sizeof file);
  } else {
    message.msg_iov = &bytes;
    message.msg_iovlen = 1;
  }
  const auto attempt = [&](int flags) {
    return ::sendmsg(m_descriptor, &message, flags | MSG_NOSIGNAL) >= 0 ? 0 : errno;
  };
  int error = attempt(MSG_DONTWAIT);
  if (error != EAGAIN || m_isStuck) return error;
  const auto end = Clock::now() + LONGEST_WAIT;
  do {
    const auto rest = std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now()).count();
    if (rest <= 0) return EAGAIN;
    const timeval limit = {static_cast<time_t>(rest / 1000000), static_cast<suseconds_t>(rest % 1000000)};
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    error = attempt(0);
  } while (error == EINTR);
  return error;
}

int VRKJournalSocket::sendInFile(const std::string& path, std::string_view entry) const {
  const int file = sealedFile(entry);
  if (file < 0) return errno;
  const int error = sendOnce(path, {}, file);
  ::close(file);
  return error;
}

int VRKJournalSocket::send(const std::string& path, std::string_view entry) {
  if (m_descriptor < 0) {
    m_descriptor = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (m_descriptor < 0) return errno;
  }
  int error = sendOnce(path, entry, -1);
  if (error == EMSGSIZE || error == ENOBUFS) error = sendInFile(path, entry);
  m_isStuck = error == EAGAIN;
  return error;
}

void VRKJournalSocket::close() {
  if (m_descriptor >= 0) ::close(m_descriptor);
  m_descriptor = -1;
  m_isStuck = false;
}
