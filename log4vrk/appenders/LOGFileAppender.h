// The appender that writes to a file.

#pragma once

#include <atomic>
#include <memory>
#include <string_view>

#include "log4vrk/appenders/LOGWriterAppender.h"

class VRKFileJournal;
class VRKFmFile;

/// Writes each formatted event at the end of a file, which is created when it is missing; its directory never is. The
/// appender is closed until a file has been opened. Without a layout nothing is written.
///
/// Thread safety: any thread. The operations marked VRK_REQUIRES are steps of others and expect the appender's lock.
/// Errors: a file that cannot be opened is tried again before every event; until then the events are lost. So are
/// events that cannot be written, with a line in the internal log each.
class LOG4VRK_EXPORT LOGFileAppender : public LOGWriterAppender {
 public:
  static constexpr long DEFAULT_BUFFER_SIZE = 8192;

  LOGFileAppender();
  /// Opens the file; `append` 1 keeps what it holds.
  LOGFileAppender(LOGLayout* layout, const I18NString& fileName, int append = 1);
  LOGFileAppender(LOGLayout* layout, const I18NString& fileName, int append, int bufferedIO, long bufferSize);
  ~LOGFileAppender() override;

  /// Opens the file that has been named, unless one is open.
  void activateOptions() override;
  /// Opens a file. While one is open nothing happens: close the appender first.
  virtual void setFile(const I18NString& name, int append, int bufferedIO, long bufferSize);
  /// Only keeps the name for activateOptions().
  void setFile(const I18NString& name);
  /// The path of the open file, or the name as it was set.
  I18NString getFile() const;

  // For the next opening. 1 keeps what the file holds, anything else empties it.
  void setAppend(int append) { m_append = append; }
  int getAppend() const { return m_append; }
  /// 1 also switches immediate flush off; 0 does not bring it back.
  void setBufferedIO(int on);
  int getBufferedIO() const { return m_bufferedIO; }
  /// In bytes.
  void setBufferSize(long size) { m_bufferSize = size; }
  long getBufferSize() const { return m_bufferSize; }

  int checkEntryConditions() override VRK_REQUIRES(m_critSection);
  void subappend(LOGLoggingEvent* event) override VRK_REQUIRES(m_critSection);
  void resetWriter() override VRK_REQUIRES(m_critSection);
  /// Makes the writer for the file that has been opened.
  virtual void setQWForFiles() VRK_REQUIRES(m_critSection);
  /// What setFile() does under the lock.
  virtual void setFileOptions(const I18NString& name, int append, int bufferedIO, long bufferSize)
      VRK_REQUIRES(m_critSection);
  void closeFile() VRK_REQUIRES(m_critSection);

 protected:
  /// What an appender calls itself in messages. For the library's derived classes.
  struct Identity;
  /// For the constructors of derived classes of the library.
  void setIdentity(const Identity& identity, const LOGAppenderInternals& internals);
  // Steps that the library's derived classes share.
  static bool appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event);
  static void holdBack(LOGAppenderSkeleton& appender);
  static void release(LOGAppenderSkeleton& appender);
  /// Writes a line that has been formatted, and flushes if need be.
  void writeLine(std::string_view line) VRK_REQUIRES(m_critSection);
  /// Makes the writer for setQWForFiles(). In an appender of the library's own classes nobody else can reach it, and it
  /// works without a lock.
  template <typename Writer>
  void makeWriter() VRK_REQUIRES(m_critSection);

  /// A change from one file to another. While it lasts the flags stay as they are, so that other threads wait for the
  /// lock instead of finding the appender closed. At its end they tell whether there is a file.
  class Change {
   public:
    explicit Change(LOGFileAppender& appender);
    ~Change();
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

   private:
    LOGFileAppender& m_appender;
    const bool m_nested;
  };

  /// Closes the file and opens the one that `name` leads to. False when that fails, and the appender is closed.
  bool openFile(const I18NString& name, int append, int bufferedIO, long bufferSize) VRK_REQUIRES(m_critSection);

  I18NString m_fileName VRK_GUARDED_BY(m_critSection);
  std::unique_ptr<VRKFmFile> m_file VRK_GUARDED_BY(m_critSection);

 private:
  friend class LOGRingDelivery;

  static const Identity IDENTITY;
  LOG4VRK_HIDDEN static const LOGAppenderInternals INTERNALS;

  LOG4VRK_HIDDEN bool hasDirectory() const VRK_REQUIRES(m_critSection);
  /// Until release() the journal is told of each write of what this thread holds back. `path` becomes that of the file.
  /// False, with nothing done, when no file is open or another thread holds back.
  LOG4VRK_HIDDEN bool keepJournal(VRKFileJournal& journal, I18NString& path);

  const Identity* m_identity = &IDENTITY;  // constant after construction

  std::atomic<int> m_append{1};
  std::atomic<int> m_bufferedIO{0};
  std::atomic<long> m_bufferSize{DEFAULT_BUFFER_SIZE};
  bool m_changing VRK_GUARDED_BY(m_critSection) = false;
  // The thread that has asked to hold its lines back and will release them; null when there is none. What other threads
  // append meanwhile is written at once, together with what is held back.
  const void* m_holder VRK_GUARDED_BY(m_critSection) = nullptr;
};
