#include "log4vrk/platform/internal/VRKMappedFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "log4vrk/platform/VRKFmDir.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/internal/VRKErrorText.h"
#include "log4vrk/platform/internal/VRKFork.h"

namespace {

constexpr mode_t WRITE_OF_OTHERS = S_IWGRP | S_IWOTH;
constexpr std::size_t PAGE = 4096;

// The lock on a file is that of its descriptor, which a forked child inherits. A child that never logs would so keep
// the file of its parent owned when the parent is dead. It closes what it finds here. Files beyond the table's size are
// owned until the children have ended, too. The mappings stay: log calls of the child look into them before it has a
// file of its own.
constexpr int PLACES = 64;
std::atomic<int> g_descriptors[PLACES];  // + 1; 0 is free

void closeThoseOfTheParent() {
  for (std::atomic<int>& each : g_descriptors) {
    if (const int descriptor = each.exchange(0)) ::close(descriptor - 1);
  }
}

int keepFromChildren(int descriptor) {
  [[maybe_unused]] static const bool watched = (vrkAtFork(nullptr, nullptr, &closeThoseOfTheParent), true);
  for (int place = 0; place < PLACES; ++place) {
    int free = 0;
    if (g_descriptors[place].compare_exchange_strong(free, descriptor + 1)) return place;
  }
  return -1;
}

}  // namespace

VRKMappedFile::~VRKMappedFile() { letGo(); }

// Closing is all: LOCK_UN would also take the lock from other processes that have the descriptor. In a child it has
// been closed, and its number and place may be another file's by now.
void VRKMappedFile::letGo() {
  if (m_data != nullptr) ::munmap(m_data, m_mapped);
  m_data = nullptr;
  if (m_descriptor < 0) return;
  const bool isInTable = m_place >= 0, isOfTheParent = m_forks != VRKThread::forks();
  if (isInTable && !isOfTheParent) g_descriptors[m_place] = 0;
  if (!isInTable || !isOfTheParent) ::close(m_descriptor);
  m_descriptor = m_place = -1;
}

VRKMappedFile::Result VRKMappedFile::create(const I18NString& path, std::size_t size) {
  int descriptor = -1;
  if (const Result made = VRKOwnedFile::create(path, descriptor); made != OPENED) return fails(made);
  const Result result = own(descriptor);
  if (result == OWNED_OR_GONE) return result;
  m_path = path;
  m_size = size;
  if (result == OPENED && reserve(0, size) && map()) return OPENED;
  const int error = m_lastError;
  ::unlink(path.toUtf8().c_str());
  letGo();
  m_lastError = error;
  return FAILED;
}

VRKMappedFile::Result VRKMappedFile::openFree(const I18NString& path) {
  int descriptor = -1;
  if (const Result opened = VRKOwnedFile::open(path, descriptor); opened != OPENED) return fails(opened);
  const Result result = own(descriptor);
  if (result != OPENED) return result;
  m_path = path;
  return map() ? OPENED : FAILED;
}

VRKMappedFile::Result VRKMappedFile::own(int descriptor) {
  letGo();
  m_descriptor = descriptor;
  m_place = keepFromChildren(descriptor);
  m_forks = VRKThread::forks();
  struct stat status;
  if (const Result owned = VRKOwnedFile::own(descriptor, status); owned != OPENED) return fails(owned);
  m_size = static_cast<std::size_t>(status.st_size);
  return OPENED;
}

// The lock is tried for a moment only: whoever opens the file meanwhile would take it for owned.
bool VRKMappedFile::copyOf(const I18NString& path, bool& isOwned) {
  const int descriptor = VRKOwnedFile::openPlainly(path, O_RDONLY);
  struct stat status;
  bool copied = false;
  if (descriptor >= 0 && ::fstat(descriptor, &status) == 0) {
    isOwned = ::flock(descriptor, LOCK_SH | LOCK_NB) != 0;
    if (!isOwned) ::flock(descriptor, LOCK_UN);
    copied = makeAnonymous(static_cast<std::size_t>(status.st_size));
    for (std::size_t done = 0; copied && done < m_size;) {
      const ssize_t got = ::pread(descriptor, m_data + done, m_size - done, static_cast<off_t>(done));
      copied = got > 0;
      if (copied) done += static_cast<std::size_t>(got);
    }
  }
  if (!copied) fails(FAILED);
  if (descriptor >= 0) ::close(descriptor);
  return copied;
}

bool VRKMappedFile::makeAnonymous(std::size_t size) {
  letGo();
  m_path.clear();
  m_size = size;
  return map();
}

// Addresses behind the end of the file are mapped, too: they become memory when the file grows. The file is opened once
// more for it: a child inherits the mapping, and that holds what was opened together with its lock.
bool VRKMappedFile::map() {
  m_mapped = m_size + RESERVE;
  const bool isFile = m_descriptor >= 0;
  const int opened = isFile ? VRKOwnedFile::openPlainly(m_path, O_RDWR) : -1;
  if (isFile && opened < 0) return fails(FAILED) == OPENED;
  const int flags = isFile ? MAP_SHARED : MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
  void* const memory = ::mmap(nullptr, m_mapped, PROT_READ | PROT_WRITE, flags, opened, 0);
  if (memory == MAP_FAILED) fails(FAILED);
  if (isFile) ::close(opened);
  if (memory == MAP_FAILED) return false;
  m_data = static_cast<char*>(memory);
#ifdef MADV_POPULATE_WRITE
  if (m_size == 0 || ::madvise(m_data, m_size, MADV_POPULATE_WRITE) == 0) return true;
#endif
  for (std::size_t at = 0; at < m_size; at += PAGE) {
    volatile char& byte = m_data[at];
    byte = byte;
  }
  return true;
}

// A limit on the size of files is asked for first: the system would end the process by a signal. A hole would do the
// same as soon as it is written to and the disk is full.
bool VRKMappedFile::reserve(std::size_t from, std::size_t to) {
  rlimit limit{};
  errno = ::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY && to > limit.rlim_cur ? EFBIG : 0;
  while (errno == 0 || errno == EINTR) {
    errno = ::posix_fallocate(m_descriptor, static_cast<off_t>(from), static_cast<off_t>(to - from));
    if (errno == 0) return true;
  }
  fails(FAILED);
  return false;
}

bool VRKMappedFile::growTo(std::size_t size) {
  if (size > m_mapped) errno = EFBIG;
  if (size > m_mapped) return fails(FAILED) == OPENED;
  if (m_descriptor >= 0 && !reserve(m_size, size)) return false;
  m_size = size;
  return true;
}

// By a second name, which is not given away when somebody has it.
bool VRKMappedFile::rename(const I18NString& path) {
  const std::string from = m_path.toUtf8();
  if (::link(from.c_str(), path.toUtf8().c_str()) != 0) return fails(FAILED) == OPENED;
  ::unlink(from.c_str());
  m_path = path;
  return true;
}

bool VRKMappedFile::remove() {
  return m_path.isEmpty() || ::unlink(m_path.toUtf8().c_str()) == 0 || fails(FAILED) == OPENED;
}

std::string VRKMappedFile::objectionTo(const I18NString& directory) {
  const std::string path = directory.toUtf8();
  struct stat status;
  if (::lstat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) VRKFmDir::makeDirectories(directory);
    if (::lstat(path.c_str(), &status) != 0) return vrkErrorText(errno);
  }
  if (S_ISLNK(status.st_mode)) return "it is a symbolic link";
  if (!S_ISDIR(status.st_mode)) return "it is no directory";
  if (status.st_uid != ::geteuid()) {
    return "it belongs to user " + std::to_string(status.st_uid) + ", and this process to " +
           std::to_string(::geteuid());
  }
  if ((status.st_mode & WRITE_OF_OTHERS) == 0) return {};
  char mode[48];
  std::snprintf(mode, sizeof mode, "others may write to it (mode %04o)", status.st_mode & 07777U);
  return mode;
}

VRKMappedFile::Result VRKMappedFile::fails(Result result) {
  m_lastError = errno;
  return result;
}
