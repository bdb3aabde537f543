// What writes an appender's text and keeps failures from whoever logs.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKFileLockRW.h"

class LOGErrorHandler;
class LOGWriter;
class VRKFmFile;
struct LOGLineWriter;

/// Writes text at the end of a file, or to a sink. A text that cannot be written to a file is lost with one line in the
/// internal log; only errors that are not the library's own are raised, after such a line.
///
/// Thread safety: write(file, text) from any thread, one text at a time; the others under the appender's lock.
/// Ownership: file, sink and error handler are lent, and outlive their use here.
class LOG4VRK_EXPORT LOGQuietWriter : public VRKFileLockRW {
 public:
  LOGQuietWriter(LOGErrorHandler* errorHandler, VRKFmFile* file);
  LOGQuietWriter(LOGWriter* writer, LOGErrorHandler* errorHandler);
  ~LOGQuietWriter() override;

  /// One write to the system, in UTF-8. An empty text does not touch the file.
  virtual void write(VRKFmFile* outStream, const I18NString& text);
  /// The same without taking the lock, followed by a flush.
  virtual void stWrite(VRKFmFile* outStream, const I18NString& text);
  // These raise VRKAssertError for a null file.
  void flush(VRKFmFile* outStream);
  void close(VRKFmFile* outStream);

  // To the sink; without one they do nothing.
  virtual void write(const I18NString& text);
  void flush();
  void close();

  /// Kept for derived writers: failures of files go to the internal log, never to the handler.
  void setErrorHandler(LOGErrorHandler* errorHandler) { m_errorHandler = errorHandler; }

  /// Raises VRKSystemError with the file's last failure.
  [[noreturn]] void throwFileError(VRKFmFile* file);

 protected:
  LOGErrorHandler* getErrorHandler() const { return m_errorHandler; }

 private:
  friend struct LOGLineWriter;

  LOGErrorHandler* m_errorHandler;
  LOGWriter* m_writer = nullptr;
  bool m_isPrivate = false;  // nobody but the appender that made it can reach it, so that it needs no lock
};
