// A file that is used as memory and stays when the process is killed.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKOwnedFile.h"

/// What is stored in its memory is the kernel's from that moment on, so it outlives the process, but no power failure.
/// The owner is the object that has the file open: while it is, no other object, here or in another process, can open
/// it. The system ends that when the owner's process ends; a forked child is no owner.
///
/// Thread safety: the memory is whoever's it is given to; the operations are for one thread at a time.
/// Errors: returned; getLastError() tells why. Memory that somebody else takes away by truncating the file cannot be
/// touched any more: the process gets SIGBUS.
class LOG4VRK_EXPORT VRKMappedFile {
 public:
  using Result = VRKOwnedFile::Result;
  static constexpr Result OPENED = VRKOwnedFile::OPENED, OWNED_OR_GONE = VRKOwnedFile::OWNED_OR_GONE,
                          FAILED = VRKOwnedFile::FAILED;
  /// So many bytes a file may grow.
  static constexpr std::size_t RESERVE = std::size_t{16} << 20;

  VRKMappedFile() = default;
  ~VRKMappedFile();
  VRKMappedFile(const VRKMappedFile&) = delete;
  VRKMappedFile& operator=(const VRKMappedFile&) = delete;

  /// Makes a file of zeros that only its user may read (mode 0600), with all its memory there already: later nothing
  /// has to be found, neither room on the disk nor a page. OWNED_OR_GONE when the name is in use.
  Result create(const I18NString& path, std::size_t size);
  /// Opens a regular file that is there; symbolic links are not followed. OWNED_OR_GONE when somebody else has it, or
  /// there is none.
  Result openFree(const I18NString& path);
  /// A copy in memory of a file that anybody may own, and whether somebody does. False when it cannot be read.
  bool copyOf(const I18NString& path, bool& isOwned);
  /// Memory without a file.
  bool makeAnonymous(std::size_t size);
  /// Adds zeros at the end. The memory stays where it is.
  bool growTo(std::size_t size);
  /// Gives the file another name, unless that is in use.
  bool rename(const I18NString& path);
  bool remove();

  char* data() const { return m_data; }
  /// In bytes.
  std::size_t size() const { return m_size; }
  /// Empty for memory without a file.
  const I18NString& path() const { return m_path; }
  /// The errno value of the last failure.
  int getLastError() const { return m_lastError; }

  /// Why files of this process should not be in the directory: what it is, whose, and who may write to it. Empty when
  /// nothing speaks against it. A directory that is missing is made, with those above it (mode 0700).
  static std::string objectionTo(const I18NString& directory);

 private:
  LOG4VRK_HIDDEN Result own(int descriptor);
  LOG4VRK_HIDDEN bool map();
  LOG4VRK_HIDDEN bool reserve(std::size_t from, std::size_t to);
  LOG4VRK_HIDDEN void letGo();
  LOG4VRK_HIDDEN Result fails(Result result);

  int m_place = -1;  // of the descriptor, in a table that forked children find
  int m_descriptor = -1;
  unsigned m_forks = 0;  // of the process that opened it
  int m_lastError = 0;
  char* m_data = nullptr;
  std::size_t m_size = 0;
  std::size_t m_mapped = 0;
  I18NString m_path;
};
