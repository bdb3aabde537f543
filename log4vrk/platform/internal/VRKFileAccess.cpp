#include "log4vrk/platform/internal/VRKFileAccess.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

bool VRKFileAccess::mayWrite(const I18NString& path) {
  const std::string name = path.toUtf8();
  struct stat status;
  if (::stat(name.c_str(), &status) != 0) return false;
  // Of the effective user, by whom files are opened.
  return ::faccessat(AT_FDCWD, name.c_str(), S_ISDIR(status.st_mode) ? W_OK | X_OK : W_OK, AT_EACCESS) == 0;
}

std::int64_t VRKFileAccess::freeBytes(const I18NString& path) {
  struct statvfs disk;
  if (::statvfs(path.toUtf8().c_str(), &disk) != 0) return -1;
  return static_cast<std::int64_t>(disk.f_bavail) * static_cast<std::int64_t>(disk.f_frsize);
}
