#include "log4vrk/platform/internal/VRKSpoolFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "log4vrk/platform/internal/VRKFault.h"

namespace {

constexpr mode_t OWNER_ONLY = 0600;

int openDescriptor(const I18NString& path, int flags) {
  const std::string bytes = path.toUtf8();
  int descriptor;
  do {
    // Non-blocking, so that a pipe of that name does not hold up anybody.
    descriptor = ::open(bytes.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK, OWNER_ONLY);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

bool writeAt(int descriptor, std::string_view bytes, std::int64_t offset) {
  if (VRKFault::hit(VRKFault::FILE_WRITE)) {
    errno = EIO;
    return false;
  }
  while (!bytes.empty()) {
    const ssize_t written = ::pwrite(descriptor, bytes.data(), bytes.size(), offset);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
    offset += written;
  }
  return true;
}

}  // namespace

// Closing is all: LOCK_UN would also take the lock from the other processes that have inherited the descriptor.
VRKSpoolFile::~VRKSpoolFile() {
  if (m_descriptor >= 0) ::close(m_descriptor);
}

VRKSpoolFile::Result VRKSpoolFile::create(const I18NString& path) {
  const int descriptor = openDescriptor(path, O_RDWR | O_CREAT | O_EXCL);
  if (descriptor < 0) return fails(errno == EEXIST ? OWNED_OR_GONE : FAILED);
  const Result result = own(descriptor);
  if (result == FAILED) ::unlink(path.toUtf8().c_str());
  return result;
}

VRKSpoolFile::Result VRKSpoolFile::openFree(const I18NString& path) {
  // For writing, although nobody may write: a network file system locks nothing else.
  const int descriptor = openDescriptor(path, O_RDWR);
  if (descriptor < 0) return fails(errno == ENOENT ? OWNED_OR_GONE : FAILED);
  return own(descriptor);
}

VRKSpoolFile::Result VRKSpoolFile::own(int descriptor) {
  if (m_descriptor >= 0) ::close(m_descriptor);
  m_descriptor = descriptor;
  if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) return fails(errno == EWOULDBLOCK ? OWNED_OR_GONE : FAILED);
  struct stat status;
  if (::fstat(descriptor, &status) != 0) return fails(FAILED);
  if (status.st_nlink == 0) return fails(OWNED_OR_GONE);  // its owner removed it before we had the lock
  if (!S_ISREG(status.st_mode)) {
    errno = EINVAL;
    return fails(FAILED);
  }
  m_size = status.st_size;
  m_modified = std::int64_t{status.st_mtim.tv_sec} * 1000000000 + status.st_mtim.tv_nsec;
  return OPENED;
}

std::int64_t VRKSpoolFile::sizeOf(const I18NString& path) {
  struct stat status;
  return ::lstat(path.toUtf8().c_str(), &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : 0;
}

bool VRKSpoolFile::append(std::string_view bytes) {
  if (writeAt(m_descriptor, bytes, m_size)) {
    m_size += static_cast<std::int64_t>(bytes.size());
    return true;
  }
  fails(FAILED);
  // Only for whoever reads it after a crash: the next bytes are written over what is left of these.
  [[maybe_unused]] const int ignored = ::ftruncate(m_descriptor, m_size);
  return false;
}

long VRKSpoolFile::read(std::int64_t offset, char* to, long count) {
  long done = 0;
  while (done < count) {
    const ssize_t got = ::pread(m_descriptor, to + done, static_cast<std::size_t>(count - done), offset + done);
    if (got == 0) break;
    if (got > 0) {
      done += static_cast<long>(got);
    } else if (errno != EINTR) {
      fails(FAILED);
      return -1;
    }
  }
  return done;
}

VRKSpoolFile::Result VRKSpoolFile::fails(Result result) {
  m_lastError = errno;
  return result;
}
