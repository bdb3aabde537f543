#include "log4vrk/platform/internal/VRKFileFacts.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "log4vrk/platform/internal/VRKFault.h"

namespace {

bool tell(bool known, const struct stat& status, VRKFileFacts& facts) {
  if (!known) return false;
  facts.device = status.st_dev;
  facts.inode = status.st_ino;
  facts.size = status.st_size;
  facts.modified = status.st_mtim.tv_sec;
  facts.modifiedNanoseconds = static_cast<std::int32_t>(status.st_mtim.tv_nsec);
  facts.mode = status.st_mode;
  return true;
}

}  // namespace

bool VRKFileFacts::of(const std::string& path, VRKFileFacts& facts) {
  struct stat status;
  return tell(::stat(path.c_str(), &status) == 0, status, facts);
}

bool VRKFileFacts::of(int descriptor, VRKFileFacts& facts) {
  struct stat status;
  return tell(::fstat(descriptor, &status) == 0, status, facts);
}

bool VRKFileFacts::isInUse(const std::string& path) {
  struct stat status;
  return ::lstat(path.c_str(), &status) == 0;
}

VRKFileFacts::Renaming VRKFileFacts::renameToNew(const std::string& from, const std::string& to) {
  if (VRKFault::hit(VRKFault::FILE_RENAME)) {
    errno = EACCES;
    return FAILED;
  }
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return RENAMED;
  if (errno == EEXIST) return EXISTS;
  if (errno != EINVAL && errno != ENOSYS) return FAILED;
  // The file system cannot do both at once.
  if (isInUse(to)) return EXISTS;
  return std::rename(from.c_str(), to.c_str()) == 0 ? RENAMED : FAILED;
}

bool VRKFileFacts::link(const std::string& path, const std::string& target) {
  struct stat status;
  if (::lstat(path.c_str(), &status) == 0) {
    if (!S_ISLNK(status.st_mode)) {
      errno = EEXIST;
      return false;
    }
    std::string now(target.size() + 1, '\0');
    const ssize_t length = ::readlink(path.c_str(), now.data(), now.size());
    if (length >= 0 && target == now.substr(0, static_cast<std::size_t>(length))) return true;
  }
  const std::string beside = path + ".tmp";
  ::unlink(beside.c_str());
  return ::symlink(target.c_str(), beside.c_str()) == 0 && std::rename(beside.c_str(), path.c_str()) == 0;
}

// Whoever had it may have removed it before the lock was had.
VRKFileClaim::VRKFileClaim(const std::string& path)
    : m_descriptor(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK)) {
  VRKFileFacts held, named;
  m_isOurs = m_descriptor >= 0 && ::flock(m_descriptor, LOCK_EX | LOCK_NB) == 0 &&
             VRKFileFacts::of(m_descriptor, held) && S_ISREG(held.mode) && VRKFileFacts::of(path, named) &&
             held.isSameFile(named);
}

// The lock is given back explicitly: the child of a fork may have the descriptor, too.
VRKFileClaim::~VRKFileClaim() {
  if (m_descriptor < 0) return;
  if (m_isOurs) ::flock(m_descriptor, LOCK_UN);
  ::close(m_descriptor);
}
