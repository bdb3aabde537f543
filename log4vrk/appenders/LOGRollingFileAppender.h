// The file appender that keeps its file below a size and the older ones as numbered backups.

#pragma once

#include <vector>

#include "log4vrk/appenders/LOGFileAppender.h"

class LOGCountingQuietWriter;

/// When an event brings the file to the maximum size, the file becomes the backup name.1, name.1 becomes name.2 and so
/// on; the oldest is dropped and a new file begun. The event that reaches the size is written whole, so a file may be
/// longer by one event.
///
/// Thread safety: any thread.
/// Errors: as LOGFileAppender; backups that cannot be moved or removed are reported in the internal log and never stop
/// the roll-over.
class LOG4VRK_EXPORT LOGRollingFileAppender : public LOGFileAppender {
 public:
  static constexpr long DEFAULT_MAXIMUM_FILE_SIZE = 0xA00000;  // 10 MB

  LOGRollingFileAppender();
  /// Opens the file; `append` 1 keeps what it holds.
  LOGRollingFileAppender(LOGLayout* layout, const I18NString& fileName, int append = 1);
  ~LOGRollingFileAppender() override;

  /// In bytes.
  void setMaximumFileSize(long size) { m_maximumFileSize = size; }
  long getMaximumFileSize() const { return m_maximumFileSize; }
  /// How many backups are kept. Below 1 there is none, and the file is emptied at each roll-over.
  void setMaxBackupIndex(long index) { m_maxBackupIndex = index; }
  long getMaxBackupIndex() const { return m_maxBackupIndex; }
  /// Does nothing, on purpose: the size is set as a number.
  void setMaxFileSize(const I18NString&) {}

  void subappend(LOGLoggingEvent* event) override VRK_REQUIRES(m_critSection);
  void setQWForFiles() override VRK_REQUIRES(m_critSection);
  /// Unlike that of the base it acts on an open appender too.
  void setFileOptions(const I18NString& name, int append, int bufferedIO, long bufferSize) override
      VRK_REQUIRES(m_critSection);
  void rollOver() VRK_REQUIRES(m_critSection);

 private:
  static const Identity IDENTITY;
  LOG4VRK_HIDDEN static const LOGAppenderInternals INTERNALS;

  static bool appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event);
  /// The writer as one that counts. Null when the program has set one that does not.
  LOGCountingQuietWriter* counter() const VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void rollOverIfFull() VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN I18NString backupName(long index) const VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void shiftBackups(long oldest) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN std::vector<long> backupsBelow(long oldest) const VRK_REQUIRES(m_critSection);

  std::atomic<long> m_maximumFileSize{DEFAULT_MAXIMUM_FILE_SIZE};
  std::atomic<long> m_maxBackupIndex{1};
};
