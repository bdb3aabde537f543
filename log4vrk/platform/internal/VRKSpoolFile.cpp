#include "log4vrk/platform/internal/VRKSpoolFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "log4vrk/platform/internal/VRKFault.h"

namespace {

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
  int descriptor = -1;
  if (const Result made = VRKOwnedFile::create(path, descriptor); made != OPENED) return fails(made);
  const Result result = own(descriptor);
  if (result == FAILED) ::unlink(path.toUtf8().c_str());
  return result;
}

VRKSpoolFile::Result VRKSpoolFile::openFree(const I18NString& path) {
  int descriptor = -1;
  const Result opened = VRKOwnedFile::open(path, descriptor);
  return opened == OPENED ? own(descriptor) : fails(opened);
}

VRKSpoolFile::Result VRKSpoolFile::own(int descriptor) {
  if (m_descriptor >= 0) ::close(m_descriptor);
  m_descriptor = descriptor;
  struct stat status;
  if (const Result owned = VRKOwnedFile::own(descriptor, status); owned != OPENED) return fails(owned);
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
