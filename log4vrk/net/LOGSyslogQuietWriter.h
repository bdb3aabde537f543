// The quiet writer that puts the priority in front of what goes to a syslog daemon.

#pragma once

#include "log4vrk/appenders/LOGQuietWriter.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

class LOGSyslogWriter;

/// Writes "<facility>text". On purpose the facility stands there alone, without the severity, so that daemons take
/// every message for severity 0.
///
/// Thread safety: not thread-safe; called under the lock of the appender that owns it.
/// Ownership: writer and error handler are lent, and must outlive this object or their replacement.
class LOG4VRK_EXPORT LOGSyslogQuietWriter : public LOGQuietWriter {
 public:
  /// `facility` is a multiple of 8.
  LOGSyslogQuietWriter(LOGSyslogWriter* writer, int facility, LOGErrorHandler* errorHandler);
  ~LOGSyslogQuietWriter() override;

  using LOGQuietWriter::write;
  /// Raises nothing: the error handler, if there is one, gets the description of what the writer raises.
  void write(const I18NString& text) override;

  /// The datagram that write() would send for a text that is ASCII, valid until the next call. Empty for any other
  /// text.
  std::string_view asciiDatagram(std::string_view text);

  /// A multiple of 8.
  void setFacility(int facility);
  /// The syslog value of the level of the event that is written next. It is kept for derived writers and not sent.
  void setLevel(int level) { m_level = level; }

 protected:
  int getFacility() const { return m_facility; }
  int getLevel() const { return m_level; }

 private:
  LOG4VRK_HIDDEN void reportFailure(const char* description);

  int m_facility = 0;
  int m_level = 0;
  // Members, so that they keep their memory from one event to the next.
  I18NString m_line;
  I18NUtf8Buffer m_asciiLine;      // always begins with the priority
  std::size_t m_prioritySize = 0;  // its length in bytes
};
