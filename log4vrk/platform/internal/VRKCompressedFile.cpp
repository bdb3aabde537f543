#include "log4vrk/platform/internal/VRKCompressedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <vector>

#include "log4vrk/platform/internal/VRKDynamicLibrary.h"
#include "log4vrk/platform/internal/VRKFault.h"

namespace {

constexpr std::size_t BLOCK = 256 * 1024;

// A file under its temporary name, which goes with it unless it is kept.
class Unfinished {
 public:
  explicit Unfinished(std::string path)
      : m_path(std::move(path)),
        m_descriptor(::open(m_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR)) {
  }
  ~Unfinished() {
    const int error = errno;
    if (m_descriptor >= 0) {
      ::close(m_descriptor);
      if (!m_isKept) ::unlink(m_path.c_str());
    }
    errno = error;
  }
  Unfinished(const Unfinished&) = delete;
  Unfinished& operator=(const Unfinished&) = delete;

  bool isOpen() const { return m_descriptor >= 0; }

  static bool write(void* context, const char* bytes, std::size_t count) {
    const int descriptor = static_cast<Unfinished*>(context)->m_descriptor;
    while (count > 0) {
      const ssize_t written = ::write(descriptor, bytes, count);
      if (written < 0 && errno != EINTR) return false;
      if (written > 0) {
        bytes += written;
        count -= static_cast<std::size_t>(written);
      }
    }
    return true;
  }

  // The name comes last, and what it leads to is on the disk by then.
  bool finish(const VRKFileFacts& like, const std::string& path) {
    const timespec time{static_cast<time_t>(like.modified), like.modifiedNanoseconds};
    const timespec times[] = {time, time};
    if (::fchmod(m_descriptor, like.mode & 0777) != 0 || ::futimens(m_descriptor, times) != 0) return false;
    if (::fsync(m_descriptor) != 0) return false;
    VRKFault::mayDie(VRKFault::COMPRESSION_WRITTEN);
    const VRKFileFacts::Renaming renaming = VRKFileFacts::renameToNew(m_path, path);
    if (renaming == VRKFileFacts::EXISTS) errno = EEXIST;
    m_isKept = renaming == VRKFileFacts::RENAMED;
    return m_isKept;
  }

 private:
  const std::string m_path;
  const int m_descriptor;
  bool m_isKept = false;
};

// So that the new name is on the disk before the old file is gone.
void syncDirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == path.npos ? "." : path.substr(0, slash + 1);
  const int descriptor = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor);
  ::close(descriptor);
}

}  // namespace

const char* VRKCompressedFile::ending(VRKCompressor::Format format) {
  return format == VRKCompressor::ZSTD ? ".zst" : ".gz";
}

// A module that could not be loaded is looked for again next time.
VRKCompressedFile::Result VRKCompressedFile::replace(const VRKFileClaim& file, const std::string& path,
                                                     VRKCompressor::Format format,
                                                     const std::function<bool()>& isOver) {
  static const auto make =
      reinterpret_cast<VRKCompressMake>(VRKDynamicLibrary::moduleFunction(VRK_COMPRESS_MODULE, VRK_COMPRESS_MAKE));
  const std::unique_ptr<VRKCompressor> compressor(make(format));
  const std::string name = path + ending(format);
  Unfinished made(name + ".tmp");
  VRKFileFacts facts;
  if (!made.isOpen() || !VRKFileFacts::of(file.descriptor(), facts)) return FAILED;
  if (!compressor) {
    errno = ENOMEM;
    return FAILED;
  }
  std::vector<char> block(BLOCK);
  for (off_t at = 0;;) {
    if (isOver()) return INTERRUPTED;
    const ssize_t count = ::pread(file.descriptor(), block.data(), BLOCK, at);
    if (count < 0 && errno == EINTR) continue;
    errno = count < 0 ? errno : 0;
    if (count < 0) return FAILED;
    at += count;
    if (!compressor->add(block.data(), static_cast<std::size_t>(count), count == 0, &Unfinished::write, &made)) {
      if (errno == 0) errno = ENOMEM;
      return FAILED;
    }
    if (count == 0) break;
  }
  if (!made.finish(facts, name)) return FAILED;
  syncDirectoryOf(name);
  VRKFault::mayDie(VRKFault::COMPRESSION_NAMED);
  return ::unlink(path.c_str()) == 0 ? MADE : FAILED;
}
