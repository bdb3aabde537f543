// The base of the appenders that write formatted text to a stream.

#pragma once

#include <atomic>
#include <memory>

#include "log4vrk/core/LOGAppenderSkeleton.h"

class LOGQuietWriter;

/// Fixes the order of checking, writing and closing; derived appenders own the stream. No header or footer of a layout
/// is ever written.
///
/// Thread safety: any thread. The operations marked VRK_REQUIRES are steps of others and expect the appender's lock.
/// Ownership: the quiet writer is owned. Appenders with a stream are not copied.
class LOG4VRK_EXPORT LOGWriterAppender : public LOGAppenderSkeleton {
 public:
  LOGWriterAppender();
  ~LOGWriterAppender() override;
  LOGWriterAppender(const LOGWriterAppender&) = delete;
  LOGWriterAppender& operator=(const LOGWriterAppender&) = delete;

  void activateOptions() override;
  void append(LOGLoggingEvent* event) override VRK_REQUIRES(m_critSection);
  /// False on purpose for all stream appenders, although nothing appears without a layout.
  bool requiresLayout() override;
  /// May be repeated.
  void close() override;
  /// The former handler is not freed, unlike in other appenders: it is the program's again.
  void setErrorHandler(LOGErrorHandler* handler) override;

  /// Not 0 when an event may be written.
  virtual int checkEntryConditions() VRK_REQUIRES(m_critSection) = 0;
  virtual void closeWriter() VRK_REQUIRES(m_critSection);
  /// Formats and writes one event.
  virtual void subappend(LOGLoggingEvent* event) VRK_REQUIRES(m_critSection) = 0;
  /// Lets go of the stream before another is taken, or for good.
  virtual void resetWriter() VRK_REQUIRES(m_critSection);

  /// Takes the writer over and frees the one before.
  void setWriter(LOGQuietWriter* writer);
  void writeHeader() {}
  void writeFooter() {}

  /// 1: flush after each event.
  int getImmediateFlush() const { return m_immediateFlush; }
  void setImmediateFlush(int on) { m_immediateFlush = on; }
  // Kept only: output is UTF-8.
  I18NString getEncoding() const;
  void setEncoding(const I18NString& encoding);

 protected:
  /// 1 while there is a stream to write to. An appender sets it after clearing the closed flag: whoever sees it open
  /// may append.
  int getOpen() const { return m_open.load(std::memory_order_acquire); }
  void setOpen(int open) { m_open.store(open, std::memory_order_release); }

  std::unique_ptr<LOGQuietWriter> m_qw VRK_GUARDED_BY(m_critSection);

 private:
  std::atomic<int> m_immediateFlush{0};
  std::atomic<int> m_open{0};
  I18NString m_encoding VRK_GUARDED_BY(m_critSection);
};
