#include "log4vrk/platform/internal/VRKLogTail.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace {

constexpr mode_t NEW_FILE_MODE = 0640;

class File {
 public:
  explicit File(const std::string& path, int flags = 0)
      : m_descriptor(
            ::open(path.c_str(), O_RDWR | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | flags, NEW_FILE_MODE)) {
    if (m_descriptor >= 0 && ::fstat(m_descriptor, &m_status) != 0) m_status = {};
  }
  ~File() {
    if (m_descriptor >= 0) ::close(m_descriptor);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  bool isOpen() const { return m_descriptor >= 0; }
  bool is(const VRKFileJournal::Place& place) const {
    return isOpen() && S_ISREG(m_status.st_mode) && m_status.st_dev == place.device && m_status.st_ino == place.inode;
  }
  std::int64_t size() const { return m_status.st_size; }

  // False when it cannot be read.
  bool read(std::int64_t from, std::string& bytes) const {
    std::size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t got = ::pread(m_descriptor, &bytes[done], bytes.size() - done, from + static_cast<off_t>(done));
      if (got <= 0 && !(got < 0 && errno == EINTR)) return false;
      if (got > 0) done += static_cast<std::size_t>(got);
    }
    return true;
  }
  bool append(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t written = ::write(m_descriptor, bytes.data(), bytes.size());
      if (written < 0 && errno != EINTR) return false;
      if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
  }

 private:
  int m_descriptor;
  struct stat m_status {};
};

// The name under which the file is now.
std::string renamed(const std::string& path, std::uint64_t inode) {
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == path.npos ? "." : path.substr(0, slash + 1);
  const std::string name = slash == path.npos ? path : path.substr(slash + 1);
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(::opendir(directory.c_str()), &::closedir);
  if (!stream) return {};
  while (const dirent* entry = ::readdir(stream.get())) {
    const std::string_view each = entry->d_name;
    if (entry->d_ino == inode && each.substr(0, name.size()) == name) {
      return (slash == path.npos ? std::string() : directory) + entry->d_name;
    }
  }
  return {};
}

VRKLogTail::Result appendAll(const File& file, std::string_view lines, VRKLogTail::Result result) {
  return file.append(lines) ? result : VRKLogTail::FAILED;
}

// Somebody else may have written to the file since, and even before the killed process did. What is as long as a whole
// batch and equal to it is that batch.
VRKLogTail::Result completeIn(const File& file, std::int64_t offset, std::string_view lines) {
  if (file.size() < offset) return appendAll(file, lines, VRKLogTail::COMPLETED);  // it has been emptied
  std::string found(static_cast<std::size_t>(file.size() - offset), '\0');
  if (!file.read(offset, found)) return VRKLogTail::FAILED;
  if (found.find(lines) != found.npos) return VRKLogTail::WAS_WHOLE;
  if (lines.substr(0, found.size()) == found) {
    return appendAll(file, lines.substr(found.size()), VRKLogTail::COMPLETED);
  }
  if (found.back() != '\n' && !file.append("\n")) return VRKLogTail::FAILED;
  return appendAll(file, lines, VRKLogTail::REPEATED);
}

}  // namespace

VRKLogTail::Result VRKLogTail::complete(const std::string& path, const VRKFileJournal::Place& place,
                                        std::string_view lines) {
  const File here(path);
  if (here.is(place)) return completeIn(here, place.size, lines);
  if (const std::string other = renamed(path, place.inode); !other.empty()) {
    const File there(other);
    if (there.is(place)) return completeIn(there, place.size, lines);
  }
  const File fresh(path, O_CREAT);
  if (!fresh.isOpen()) return FAILED;
  return appendAll(fresh, lines, REPEATED);
}
