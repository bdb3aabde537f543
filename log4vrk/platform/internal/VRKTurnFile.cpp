#include "log4vrk/platform/internal/VRKTurnFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "log4vrk/platform/internal/VRKOwnedFile.h"

VRKTurnFile::VRKTurnFile(const I18NString& path, std::chrono::milliseconds limit)
    : m_descriptor(VRKOwnedFile::openPlainly(path, O_RDWR | O_CREAT)) {
  const auto until = std::chrono::steady_clock::now() + limit;
  while (m_descriptor >= 0 && ::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
    const bool wait = errno == EWOULDBLOCK || errno == EINTR;
    m_lastError = errno;
    if (!wait || std::chrono::steady_clock::now() >= until) return;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  m_isOurs = m_descriptor >= 0;
  m_lastError = m_isOurs ? 0 : errno;
}

VRKTurnFile::~VRKTurnFile() {
  if (m_descriptor < 0) return;
  if (m_isOurs) ::flock(m_descriptor, LOCK_UN);  // a child of a fork may have the descriptor, too
  ::close(m_descriptor);
}

std::string VRKTurnFile::note() const {
  char text[256];
  const ssize_t length = ::pread(m_descriptor, text, sizeof text, 0);
  return std::string(text, length > 0 ? static_cast<std::size_t>(length) : 0);
}

// The end of a longer note before is behind the line end, and does not count.
void VRKTurnFile::setNote(const std::string& text) const {
  const std::string line = text + "\n";
  if (::pwrite(m_descriptor, line.data(), line.size(), 0) != static_cast<ssize_t>(line.size())) return;
  if (::ftruncate(m_descriptor, static_cast<off_t>(line.size())) != 0) return;
}
