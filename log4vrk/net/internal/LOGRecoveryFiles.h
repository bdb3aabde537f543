// The files that keep events which a remote log server has not acknowledged.

#pragma once

#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGRecoveryReader;
struct LOGRecoveryFile;

/// A first-in, first-out store of messages in a directory. What append() accepted outlives the process: it is in the
/// kernel, though not forced to the disk, and is delivered by this store or by the next one that opens the directory,
/// also of another process. Messages are delivered at least once: how far the oldest file is acknowledged is kept in
/// memory only, and after a crash that file is delivered from its beginning.
///
/// There are several files, 4 MiB each with the default limit. A file belongs to the one store that has it locked, so
/// that any number of stores share a directory; a store adopts the files that nobody has locked. It is removed when its
/// last message is acknowledged. One that is damaged is delivered up to the damage, and then renamed to
/// "<name>.damaged" instead. Messages that are set aside are in "<name>.refused"; without that ending the file is
/// delivered again.
///
/// Thread safety: not thread-safe; one thread at a time.
/// Errors: when the file system fails, append() says so to its caller, who still has the message, and messages that can
/// no longer be read are counted as dropped. The internal log gets one line when a trouble begins and one when it is
/// over. Nothing is raised but std::bad_alloc.
class LOG4VRK_EXPORT_FOR_TESTS LOGRecoveryFiles {
 public:
  static constexpr std::int64_t DEFAULT_LIMIT = std::int64_t{256} << 20;

  struct Record {
    std::uint64_t position;  // for acknowledge(); goes up by one
    std::uint64_t sequence;
    std::string payload;
  };

  /// `directory` is seen from the working directory of now. `limitBytes` bounds the files in it together, those that
  /// are set aside included. Past it the oldest of this store go, those that are set aside first; what other stores
  /// have open they keep, and the store keeps at least the file that it writes to.
  explicit LOGRecoveryFiles(const I18NString& directory, std::int64_t limitBytes = DEFAULT_LIMIT);
  /// Closes.
  ~LOGRecoveryFiles();
  LOGRecoveryFiles(const LOGRecoveryFiles&) = delete;
  LOGRecoveryFiles& operator=(const LOGRecoveryFiles&) = delete;

  /// Makes the directory where it is missing, and its parents (mode 0700), and adopts. False when there is no such
  /// directory: append() goes on trying.
  bool open();
  /// Takes over files whose owners are gone, behind what is here. For every reconnection. Where there are very many,
  /// the rest follows by itself when these are acknowledged.
  void adopt();

  /// False when the message could not be kept. Larger ones than LOGRecoveryRecord::MAX_PAYLOAD never are.
  bool append(std::uint64_t sequence, std::string_view payload);
  /// The same for a message that its caller goes on delivering. It is as if next() had given it out at `position`; or,
  /// when messages before it are not taken, next() gives it out in its turn, and `position` is 0.
  bool appendTaken(std::uint64_t sequence, std::string_view payload, std::uint64_t& position);
  /// The oldest message that has not been taken; false when there is none. It stays until it is acknowledged.
  bool next(Record& record);
  /// Whether there is a message that has not been taken.
  bool hasMore() const { return m_taken < m_last; }
  /// The message that next() gave out last, at this position, is not taken after all.
  void giveBack(std::uint64_t position) { m_taken = position - 1; }
  /// Lets next() begin again with the oldest message that is not acknowledged.
  void rewind();
  /// The message at this position and all before it are delivered. Positions that are not out are ignored.
  void acknowledge(std::uint64_t position);
  /// Puts a message where nobody delivers it, for people. The name of the file, empty when it could not be kept.
  I18NString setAside(std::uint64_t sequence, std::string_view payload);

  /// Messages that are not acknowledged, taken or not.
  std::uint64_t pending() const { return m_last - m_acknowledged; }
  /// Bytes in this store's files, acknowledged messages of the oldest file and damage included.
  std::int64_t bytes() const { return m_bytes; }
  /// Messages lost to the limit or to damage while the store had them; it only grows.
  std::uint64_t dropped() const { return m_dropped; }

  /// Leaves the files to whoever comes next. May be repeated, and open() may follow.
  void close();
  /// The same for a forked child, whose parent goes on with the files and their locks: it closes the child's
  /// descriptors and says nothing. Until then the locks outlive the parent. No call may be under way at the fork.
  void abandon();

 private:
  struct SetAside {
    I18NString path;
    std::int64_t bytes;
  };

  void adopt(bool report);
  LOG4VRK_HIDDEN void findSetAside();
  LOG4VRK_HIDDEN void measure();
  bool isOver(std::int64_t bytes) const { return m_bytes + m_others + bytes > m_limit; }
  LOG4VRK_HIDDEN std::vector<std::unique_ptr<LOGRecoveryFile>> findFree(bool report);
  LOG4VRK_HIDDEN void takeOver(std::unique_ptr<LOGRecoveryFile> file);
  LOG4VRK_HIDDEN std::unique_ptr<LOGRecoveryFile> newFile(const char* ending);
  LOG4VRK_HIDDEN void write(std::string_view record);
  LOG4VRK_HIDDEN static std::string recordOf(std::uint64_t sequence, std::string_view payload, std::int64_t limit);
  LOG4VRK_HIDDEN void makeRoom(std::int64_t bytes);
  LOG4VRK_HIDDEN void dropOldest();
  LOG4VRK_HIDDEN void removeDelivered();
  LOG4VRK_HIDDEN void removeOldest();
  LOG4VRK_HIDDEN void leave(std::unique_ptr<LOGRecoveryFile> file);
  LOG4VRK_HIDDEN void cutOff(LOGRecoveryFile& file);
  LOG4VRK_HIDDEN void startReading(std::size_t index);
  LOG4VRK_HIDDEN void sayLost();
  LOG4VRK_HIDDEN I18NString pathOf(const I18NString& name) const;

  const I18NString m_directory;
  const std::int64_t m_limit;
  const std::int64_t m_fileLimit;

  std::deque<std::unique_ptr<LOGRecoveryFile>> m_files;  // oldest first; all of them locked
  LOGRecoveryFile* m_writing = nullptr;                  // null or the last of m_files
  std::vector<std::unique_ptr<LOGRecoveryFile>>
      m_stuck;                                 // could not be removed; kept locked, so that nobody delivers them again
  std::list<SetAside> m_setAside;              // oldest first
  std::unique_ptr<LOGRecoveryFile> m_refused;  // null, or the last to be set aside, which is written to
  bool m_moreFree = false;                     // more files than could be adopted at once
  std::int64_t m_bytes = 0;
  std::int64_t m_others = 0;  // bytes in the directory that are not in m_bytes, as of the last look

  // Positions number the messages in the order of the files, from 1: m_acknowledged <= m_taken <= m_last.
  std::uint64_t m_acknowledged = 0, m_taken = 0, m_last = 0;
  std::size_t m_readIndex = 0;  // the file that next() reads
  std::unique_ptr<LOGRecoveryReader>
      m_reader;  // null at its beginning; what it meets again and is taken it passes over

  std::uint64_t m_dropped = 0;
  // What the internal log has got a line about; at its end it gets another one.
  bool m_failing = false;    // append()
  std::uint64_t m_full = 0;  // messages lost to the limit
};
