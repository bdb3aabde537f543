// A file as appenders and the internal log use it.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"
#include "log4vrk/platform/internal/VRKFault.h"

class VRKFileJournal;
struct VRKFileFacts;

/// A file that is written at its end, or read word by word. What write() accepted is in the kernel when it returns, so
/// it outlives a crash of the process, unless the owner has asked for a buffer or holds back. Failures are returned,
/// not raised; getLastError() tells why.
///
/// Thread safety: not thread-safe; the caller holds the lock of whoever owns the file.
class LOG4VRK_EXPORT VRKFmFile {
 public:
  // How open() treats the file besides writing at its end.
  static constexpr int EXISTING = 0;
  static constexpr int TRUNCATE = 0x200;
  static constexpr int CREATE_EXCLUSIVE = 0xC0;

  VRKFmFile() = default;
  ~VRKFmFile();
  VRKFmFile(const VRKFmFile&) = delete;
  VRKFmFile& operator=(const VRKFmFile&) = delete;

  bool openForReading(const I18NString& path);
  /// New files get mode 0640 under the process's mask; the mode of an existing file is left alone. A pipe that nobody
  /// reads cannot be opened.
  bool open(const I18NString& path, int flags);
  /// Writes to a descriptor that somebody else owns: close() lets go of it without closing it.
  bool attach(int descriptor);
  bool isOpen() const { return m_descriptor >= 0; }

  /// Moves `offset` bytes from the end. Succeeds without effect where there is nothing to do: on files opened for
  /// appending, and on terminals and pipes. -1 on failure.
  long seekFromEnd(long offset) { return m_seeks || VRKFault::armed() ? seek(offset) : 0; }
  /// Returns the number of bytes, all of which have been taken, or -1: then they are lost, and so is what had been
  /// collected. When a part of them has reached the file, the next write begins a new line.
  long write(std::string_view bytes) {
    if (m_bufferSize > 0 || m_holding || m_isTorn || m_collected.size() > 0) return collect(bytes);
    return writeAll(bytes) ? static_cast<long>(bytes.size()) : loseOne();
  }
  long write(const char* bytes, long count) { return write({bytes, static_cast<std::size_t>(count)}); }
  /// The same of a text, in UTF-8.
  long write(const I18NString& text);
  /// Writes what the buffer holds; the disk is not waited for. 0 on failure.
  int flush();

  /// Collects whole writes. They go to the system when there are `size` bytes or more, and with flush(), close() and
  /// the process's exit(). 0, the default, collects nothing. A forked child drops what its parent has collected.
  void setBuffer(std::size_t size);
  /// While this is on, write() collects as with a buffer of 64 KiB; release() has to come soon.
  void setHoldingBack(bool on) { m_holding = on; }
  /// Who is told of each write of what has been collected, until it is set anew; lent, and null at first. With one
  /// everything is written at release().
  void setJournal(VRKFileJournal* journal) { m_journal = journal; }
  /// Writes what is held back. 0 on failure.
  int release();
  /// How many bytes are collected and have not gone to the system.
  std::size_t pending() const { return m_collected.size(); }
  /// How many bytes have reached the system since the file was opened.
  std::int64_t written() const { return m_written; }
  /// How many calls of write() have lost their bytes, or a part of them, since this was last asked.
  std::size_t takeLost() { return std::exchange(m_lost, 0); }
  /// Whether any file has a buffer.
  static bool anyBuffered();
  /// Writes the buffers of all files, while nobody else uses them; from then on nothing is buffered.
  static void writeBuffers();
  /// May be repeated.
  void close();

  /// Tells the other processes that somebody may still write to this file, until it is closed: none of them takes it
  /// away meanwhile. False when one has just begun to, or the file system knows no locks.
  bool hold();
  /// False when it cannot be told.
  bool facts(VRKFileFacts& facts) const;
  /// -1 when it cannot be told.
  std::int64_t size();
  /// The next word between white space; false at the end. Only after openForReading().
  bool readWord(std::string& word);

  const I18NString& getName() const { return m_name; }
  /// The errno value of the last failure.
  int getLastError() const { return m_lastError; }

 private:
  LOG4VRK_HIDDEN bool adopt(int descriptor, const I18NString& name);
  long seek(long offset);
  long collect(std::string_view bytes);
  long fails(long result);
  bool failed() { return fails(0) != 0; }
  long loseOne();
  bool writeAll(std::string_view bytes);
  LOG4VRK_HIDDEN bool writeOut();
  LOG4VRK_HIDDEN void announce();
  LOG4VRK_HIDDEN void dropThoseOfTheParent();

  int m_descriptor = -1;
  bool m_owned = false;
  bool m_seeks = false;  // whether moving to the end takes a system call
  int m_lastError = 0;
  I18NString m_name;
  bool m_holding = false;
  VRKFileJournal* m_journal = nullptr;
  bool m_isTorn = false;       // the file ends with a part of a line whose rest is lost
  std::int64_t m_written = 0;  // see written()
  std::size_t m_lost = 0;      // see takeLost()
  std::size_t m_bufferSize = 0;
  I18NUtf8Buffer m_collected;       // in the buffer, or held back
  std::vector<std::size_t> m_ends;  // where each write ends in it
  unsigned m_forks = 0;             // of the process that has collected
};
