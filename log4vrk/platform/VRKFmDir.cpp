#include "log4vrk/platform/VRKFmDir.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "log4vrk/platform/internal/VRKFault.h"

bool VRKFmDir::exists(const I18NString& path, int kind) {
  struct stat status;
  if (::stat(path.toUtf8().c_str(), &status) != 0) return false;
  return kind == DIRECTORY ? S_ISDIR(status.st_mode) : S_ISREG(status.st_mode);
}

void VRKFmDir::splitPath(const I18NString& path, I18NString& directory, I18NString& file) {
  const std::size_t slash = path.findLast("/");
  if (slash == I18NString::npos) {
    directory.clear();
    file = path;
    return;
  }
  directory = path.substring(0, slash == 0 ? 1 : slash);
  file = path.substring(slash + 1);
}

bool VRKFmDir::makeDirectories(const I18NString& path) {
  if (path.isEmpty() || exists(path, DIRECTORY)) return true;  // empty: the parent of a relative name
  I18NString parent, name;
  splitPath(path, parent, name);
  if (!makeDirectories(parent)) return false;
  // Another thread or process may have made it since the look above.
  return ::mkdir(path.toUtf8().c_str(), S_IRWXU) == 0 || exists(path, DIRECTORY);
}

bool VRKFmDir::removeFile(const I18NString& path) {
  return !VRKFault::hit(VRKFault::FILE_REMOVE) && ::unlink(path.toUtf8().c_str()) == 0;
}

bool VRKFmDir::renameFile(const I18NString& from, const I18NString& to) {
  return !VRKFault::hit(VRKFault::FILE_RENAME) && std::rename(from.toUtf8().c_str(), to.toUtf8().c_str()) == 0;
}

std::vector<I18NString> VRKFmDir::list(const I18NString& directory) {
  std::vector<I18NString> names;
  const std::string path = directory.isEmpty() ? "." : directory.toUtf8();
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(::opendir(path.c_str()), &::closedir);
  if (!stream) return names;
  while (const dirent* entry = ::readdir(stream.get())) names.emplace_back(entry->d_name);
  return names;
}
