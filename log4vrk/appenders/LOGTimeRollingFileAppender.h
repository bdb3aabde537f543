// The file appender that begins a new file with each hour, day or other period.

#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "log4vrk/appenders/LOGFileAppender.h"

class LOGCountingQuietWriter;

/// The first event of a period finds the file of an earlier one, which gets its name with the date of that: log becomes
/// log.2026-11-22, or log.2026-11-22.1 if there is one of that name. No file is ever overwritten. An event belongs to
/// the period of its time stamp, but for those that come when a later one has begun, which go to the current file: no
/// period is entered twice, whatever the clock does. Finished files may be compressed and removed, in a thread of the
/// appender's own.
///
/// Any number of processes may write to one file by appenders of this class with the same settings. They take turns to
/// roll it over by the lock on FILE.lock, which also keeps the period that the file is for.
///
/// Thread safety: any thread. Settings are made before the file is opened.
/// Errors: as LOGFileAppender. What prevents a roll-over is told in the internal log, once until it works again;
/// meanwhile events go to the current file. Settings that cannot be read are told and ignored.
/// Forks: a child goes on with the file, and rolls it over in turn with its parent.
class LOG4VRK_EXPORT LOGTimeRollingFileAppender : public LOGFileAppender {
 public:
  LOGTimeRollingFileAppender();
  /// Opens the file; `append` 1 keeps what it holds.
  LOGTimeRollingFileAppender(LOGLayout* layout, const I18NString& fileName, int append = 1);
  ~LOGTimeRollingFileAppender() override;

  /// "minute", "hour", "day" or "week", in any case, with a number in front of it if need be: "15 minutes". Until one
  /// is set, the shortest of minute, hour and day that the date pattern tells, or the day.
  void setInterval(const I18NString& interval);
  I18NString getInterval() const;
  /// A pattern of strftime, for what follows the name of a finished file. It has to tell one period from another.
  void setDatePattern(const I18NString& pattern);
  I18NString getDatePattern() const;
  /// Where periods begin and end: a name that ICU knows, or an offset. The process's own zone unless set.
  void setTimeZone(const I18NString& name);
  I18NString getTimeZone() const;
  /// Bytes, or a number of "kB", "MB" or "GB" (of 1024 each time). An event that brings the file to the size is its
  /// last. 0, the default: no limit.
  void setMaximumFileSize(const I18NString& size);
  std::int64_t getMaximumFileSize() const { return m_maximumFileSize; }

  // How much is kept of finished files; the oldest are removed. 0, the default: no limit.
  void setMaxHistory(long files);
  long getMaxHistory() const;
  /// As an interval ("30 days"), since the end of a file's period. In seconds.
  void setMaxAge(const I18NString& age);
  std::int64_t getMaxAge() const;
  /// Of all together, as setMaximumFileSize() takes it.
  void setMaxTotalSize(const I18NString& size);
  std::int64_t getMaxTotalSize() const;
  /// "zlib" for files as gzip has them (.gz), "zstd" (.zst), or "none", the default.
  void setCompress(const I18NString& format);
  I18NString getCompress() const;
  /// The path of a symbolic link to the current file, made when the file is opened. None unless set.
  void setLink(const I18NString& path);
  I18NString getLink() const;

  /// Opens the file's name anew: after somebody has renamed the file, a new one is begun. When that fails the former
  /// stays in use.
  void reopen();
  /// The same at the next event. May be called by a signal handler.
  void requestReopen() { m_reopenAsked.store(true, std::memory_order_relaxed); }

  void subappend(LOGLoggingEvent* event) override VRK_REQUIRES(m_critSection);
  void setQWForFiles() override VRK_REQUIRES(m_critSection);
  void setFileOptions(const I18NString& name, int append, int bufferedIO, long bufferSize) override
      VRK_REQUIRES(m_critSection);
  /// Besides it waits for the compression of finished files, for a second at most; the next start does the rest.
  void close() override;

 private:
  struct Rolling;
  class Turn;

  static const Identity IDENTITY;
  LOG4VRK_HIDDEN static const LOGAppenderInternals INTERNALS;

  static bool appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event);
  LOGCountingQuietWriter* counter() const VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void lookIfDue(const LOGLoggingEvent& event) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void settleIfFull(const LOGLoggingEvent& event) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void look(std::int64_t now) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void settle(std::int64_t now) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN bool settleInTurn(const Turn& turn, std::int64_t now) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN bool rollOver(const Turn& turn, std::int64_t now) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN bool openAnew() VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN bool isElsewhere() const VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN bool isFull() const VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void beginFile() VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void makeLink() VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void wakeKeeper() VRK_REQUIRES(m_critSection);

  std::unique_ptr<Rolling> m_rolling VRK_GUARDED_BY(m_critSection);
  // The second of the next event that looks whether the file is still the right one.
  std::int64_t m_nextLook VRK_GUARDED_BY(m_critSection);
  std::int64_t m_nextSettling VRK_GUARDED_BY(m_critSection);
  std::atomic<std::int64_t> m_maximumFileSize{0};
  std::atomic<bool> m_reopenAsked{false};
};
