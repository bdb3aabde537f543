#include "log4vrk/platform/internal/VRKOwnedFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

namespace {

constexpr mode_t OWNER_ONLY = 0600;

}  // namespace

int VRKOwnedFile::openPlainly(const I18NString& path, int flags) {
  const std::string bytes = path.toUtf8();
  int descriptor;
  do {
    // Non-blocking, so that a pipe of that name does not hold up anybody.
    descriptor = ::open(bytes.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK, OWNER_ONLY);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

VRKOwnedFile::Result VRKOwnedFile::create(const I18NString& path, int& descriptor) {
  descriptor = openPlainly(path, O_RDWR | O_CREAT | O_EXCL);
  if (descriptor >= 0) return OPENED;
  return errno == EEXIST ? OWNED_OR_GONE : FAILED;
}

VRKOwnedFile::Result VRKOwnedFile::open(const I18NString& path, int& descriptor) {
  descriptor = openPlainly(path, O_RDWR);
  if (descriptor >= 0) return OPENED;
  return errno == ENOENT ? OWNED_OR_GONE : FAILED;
}

VRKOwnedFile::Result VRKOwnedFile::own(int descriptor, struct stat& status) {
  if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) return errno == EWOULDBLOCK ? OWNED_OR_GONE : FAILED;
  if (::fstat(descriptor, &status) != 0) return FAILED;
  if (status.st_nlink == 0) return OWNED_OR_GONE;
  if (S_ISREG(status.st_mode)) return OPENED;
  errno = EINVAL;
  return FAILED;
}
