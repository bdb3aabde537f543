// The appender that writes to the standard output or error stream.

#pragma once

#include <string_view>

#include "log4vrk/appenders/LOGWriterAppender.h"

class VRKFmFile;

/// Writes each formatted event to the process's descriptor 1 or 2 at once. The descriptor itself is never closed.
/// Without a layout nothing is written.
///
/// Thread safety: any thread. The operations marked VRK_REQUIRES are steps of others and expect the appender's lock.
/// Errors: a stream that cannot be had is tried again before every event. Once closed the appender stays closed until
/// the next setTarget().
class LOG4VRK_EXPORT LOGConsoleAppender : public LOGWriterAppender {
 public:
  LOGConsoleAppender();
  explicit LOGConsoleAppender(LOGLayout* layout);
  /// The stream is taken by the first activateOptions().
  LOGConsoleAppender(LOGLayout* layout, const I18NString& target);
  ~LOGConsoleAppender() override;

  /// Takes the stream, unless it has been taken.
  void activateOptions() override;
  /// "out" or "err" in any case, and takes the stream. Any other value draws two warnings and changes nothing.
  void setTarget(const I18NString& value);
  /// As it was given, "out" by default.
  I18NString getTarget() const;
  void targetWarn(const I18NString& value);

  int checkEntryConditions() override VRK_REQUIRES(m_critSection);
  void closeWriter() override VRK_REQUIRES(m_critSection);
  void subappend(LOGLoggingEvent* event) override VRK_REQUIRES(m_critSection);
  virtual void setQWForFiles() VRK_REQUIRES(m_critSection);

 private:
  friend class LOGColorConsoleAppender;

  LOG4VRK_HIDDEN static const LOGAppenderInternals INTERNALS;

  /// Writes a line that has been formatted.
  void writeLine(std::string_view line) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void takeStream(int descriptor) VRK_REQUIRES(m_critSection);

  I18NString m_target VRK_GUARDED_BY(m_critSection);
  std::unique_ptr<VRKFmFile> m_outFile VRK_GUARDED_BY(m_critSection);
};
