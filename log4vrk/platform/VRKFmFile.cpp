#include "log4vrk/platform/VRKFmFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <string_view>
#include <vector>

#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKFault.h"
#include "log4vrk/platform/internal/VRKFileFacts.h"
#include "log4vrk/platform/internal/VRKFileJournal.h"
#include "log4vrk/platform/internal/VRKMutex.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

namespace {

constexpr mode_t NEW_FILE_MODE = 0640;

int openDescriptor(const I18NString& path, int flags) {
  const std::string bytes = path.toUtf8();
  int descriptor;
  do {
    descriptor = ::open(bytes.c_str(), flags | O_CLOEXEC | O_NOCTTY, NEW_FILE_MODE);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

int systemFlags(int flags) {
  int result = O_WRONLY | O_APPEND;
  if (flags & VRKFmFile::TRUNCATE) result |= O_TRUNC;
  if ((flags & VRKFmFile::CREATE_EXCLUSIVE) == VRKFmFile::CREATE_EXCLUSIVE) result |= O_CREAT | O_EXCL;
  return result;
}

// A pipe that nobody reads is an error, and not waited for.
int openForWriting(const I18NString& path, int flags) {
  const int descriptor = openDescriptor(path, flags | O_NONBLOCK);
  if (descriptor < 0) return descriptor;
  const int status = ::fcntl(descriptor, F_GETFL);
  if (status >= 0 && ::fcntl(descriptor, F_SETFL, status & ~O_NONBLOCK) >= 0) return descriptor;
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return -1;
}

bool injected(VRKFault::Point point) {
  if (!VRKFault::hit(point)) return false;
  errno = EIO;
  return true;
}

constexpr std::size_t MOST_HELD_BACK = 64 * 1024;

// Set at the process's exit. From then on nothing is collected any more, because nobody would write it.
std::atomic<bool> g_exiting{false};

// A descriptor that somebody made non-blocking, such as a shared terminal, may be full for a moment.
bool waitUntilWritable(int descriptor) {
  pollfd waiting{descriptor, POLLOUT, 0};
  return ::poll(&waiting, 1, -1) > 0 || errno == EINTR;
}

// The files that have a buffer, for the process's exit.
struct Buffered {
  VRKMutex mutex;
  std::vector<VRKFmFile*> files VRK_GUARDED_BY(mutex);
};

Buffered& buffered() {
  static Buffered& all = vrkImmortal<Buffered>();
  return all;
}

}  // namespace

void VRKFmFile::setBuffer(std::size_t size) {
  writeOut();
  if ((m_bufferSize > 0) != (size > 0)) {
    const VRKMutexGuard guard(buffered().mutex);
    auto& files = buffered().files;
    if (size > 0) {
      files.push_back(this);
    } else {
      files.erase(std::remove(files.begin(), files.end(), this), files.end());
    }
  }
  m_bufferSize = size;
}

bool VRKFmFile::anyBuffered() {
  const VRKMutexGuard guard(buffered().mutex);
  return !buffered().files.empty();
}

void VRKFmFile::writeBuffers() {
  g_exiting = true;
  const VRKMutexGuard guard(buffered().mutex);
  for (VRKFmFile* file : buffered().files) file->writeOut();
}

VRKFmFile::~VRKFmFile() {
  const VRKNoCancellation finished;  // nothing can be unwound out of a destructor
  close();
}

bool VRKFmFile::openForReading(const I18NString& path) { return adopt(openDescriptor(path, O_RDONLY), path); }

bool VRKFmFile::open(const I18NString& path, int flags) {
  return adopt(openForWriting(path, systemFlags(flags)), path);
}

bool VRKFmFile::attach(int descriptor) {
  // A process may run without standard streams; any open descriptor will do.
  const bool valid = !injected(VRKFault::FILE_ATTACH) && ::fcntl(descriptor, F_GETFD) >= 0;
  if (!adopt(valid ? descriptor : -1, I18NString(descriptor == STDERR_FILENO ? "stderr" : "stdout"))) return false;
  m_owned = false;
  m_seeks = ::lseek(descriptor, 0, SEEK_CUR) >= 0;  // a file, which somebody may have opened without O_APPEND
  return true;
}

// The former file stays open when the new one cannot be had.
bool VRKFmFile::adopt(int descriptor, const I18NString& name) {
  m_lastError = descriptor < 0 ? errno : 0;
  if (descriptor < 0) return false;
  close();
  m_descriptor = descriptor;
  m_owned = true;
  m_seeks = m_isTorn = false;
  m_written = 0;
  m_lost = 0;
  m_name = name;
  return true;
}

long VRKFmFile::seek(long offset) {
  if (injected(VRKFault::FILE_SEEK)) return fails(-1);
  if (!m_seeks) return 0;
  if (::lseek(m_descriptor, offset, SEEK_END) < 0) return fails(-1);
  return 0;
}

long VRKFmFile::write(const I18NString& text) { return write(std::string_view(text.toUtf8())); }

long VRKFmFile::collect(std::string_view bytes) {
  const std::size_t limit = std::max(g_exiting ? 0 : m_bufferSize, m_holding ? MOST_HELD_BACK : 0);
  dropThoseOfTheParent();
  // The rest of the last line is lost. Its beginning gets a line of its own.
  if (m_isTorn && m_collected.size() == 0) m_collected.appendChecked("\n");
  m_collected.appendChecked(bytes);
  m_ends.push_back(m_collected.size());
  if (m_journal != nullptr && m_holding) m_journal->collected();
  return m_collected.size() >= limit && !writeOut() ? -1 : static_cast<long>(bytes.size());
}

long VRKFmFile::loseOne() {
  ++m_lost;
  return -1;
}

bool VRKFmFile::writeAll(std::string_view bytes) {
  if (injected(VRKFault::FILE_WRITE)) return failed();
  while (!bytes.empty()) {
    const ssize_t written = ::write(m_descriptor, bytes.data(), bytes.size());
    if (written >= 0) {
      const auto count = static_cast<std::size_t>(written);
      m_written += written;
      if (count > 0) m_isTorn = bytes[count - 1] != '\n';
      bytes.remove_prefix(count);
    } else if (errno == EAGAIN ? !waitUntilWritable(m_descriptor) : errno != EINTR) {
      return failed();
    }
  }
  m_isTorn = false;  // a text need not end with a line
  return true;
}

// The bytes are gone afterwards, whatever comes of it: kept, they would grow without limit on a full disk. Each write
// that has not reached the file whole is counted as lost.
bool VRKFmFile::writeOut() {
  if (m_collected.size() == 0) return true;
  dropThoseOfTheParent();
  const std::int64_t before = m_written;
  if (m_journal != nullptr) announce();
  const bool written = writeAll(m_collected.view());
  if (m_journal != nullptr) m_journal->wrote();
  if (!written) {
    const auto whole = static_cast<std::size_t>(m_written - before);
    m_lost += static_cast<std::size_t>(m_ends.end() - std::upper_bound(m_ends.begin(), m_ends.end(), whole));
  }
  m_collected.clear();
  m_ends.clear();
  return written;
}

// A forked child has a copy of what its parent has collected. The parent writes it; written here it would be there
// twice.
void VRKFmFile::dropThoseOfTheParent() {
  if (m_forks == VRKThread::forks()) return;
  m_forks = VRKThread::forks();
  m_collected.clear();
  m_ends.clear();
}

int VRKFmFile::flush() {
  if (injected(VRKFault::FILE_FLUSH)) return static_cast<int>(fails(0));
  if (!writeOut()) return 0;
  return m_descriptor >= 0 ? 1 : 0;
}

void VRKFmFile::announce() {
  struct stat status;
  if (::fstat(m_descriptor, &status) != 0) status = {};
  m_journal->writes({status.st_dev, status.st_ino, status.st_size}, m_collected.view());
}

int VRKFmFile::release() { return (m_bufferSize > 0 && m_journal == nullptr) || writeOut() ? 1 : 0; }

void VRKFmFile::close() {
  setBuffer(0);
  if (m_owned && m_descriptor >= 0) ::close(m_descriptor);
  m_descriptor = -1;
  m_owned = false;
}

bool VRKFmFile::hold() { return ::flock(m_descriptor, LOCK_SH | LOCK_NB) == 0; }

bool VRKFmFile::facts(VRKFileFacts& facts) const { return VRKFileFacts::of(m_descriptor, facts); }

std::int64_t VRKFmFile::size() {
  struct stat status;
  if (::fstat(m_descriptor, &status) == 0) return status.st_size;
  return fails(-1);
}

bool VRKFmFile::readWord(std::string& word) {
  word.clear();
  char c;
  ssize_t count;
  while ((count = ::read(m_descriptor, &c, 1)) == 1) {
    const bool blank = c == ' ' || (c >= '\t' && c <= '\r');
    if (!blank) {
      word += c;
    } else if (!word.empty()) {
      break;
    }
  }
  if (count < 0) fails(-1);
  return !word.empty();
}

long VRKFmFile::fails(long result) {
  m_lastError = errno;
  return result;
}
