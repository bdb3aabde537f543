// Puts the priority in front of what goes to a syslog daemon.

#pragma once

#include "log4vrk/appenders/LOGQuietWriter.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

class LOGSyslogWriter;

/// Writes "<facility>text". The header carries the facility alone, on purpose: daemons take every message as
/// severity 0.
///
/// Thread safety: called under the lock of the appender that owns it.
/// Ownership: writer and error handler are lent, and outlive their use here.
class LOG4VRK_EXPORT LOGSyslogQuietWriter : public LOGQuietWriter {
 public:
  /// `facility` is a multiple of 8.
  LOGSyslogQuietWriter(LOGSyslogWriter* writer, int facility, LOGErrorHandler* errorHandler);
  ~LOGSyslogQuietWriter() override;

  using LOGQuietWriter::write;
  /// Nothing is raised: what the writer raises goes to the error handler.
  void write(const I18NString& text) override;

  /// What write() would have the writer send of a text in UTF-8, valid until the next call. Empty when it is not ASCII.
  std::string_view asciiDatagram(std::string_view text);

  void setFacility(int facility);
  /// Of the event that is written next; kept for derived writers, and not sent.
  void setLevel(int level) { m_level = level; }

 protected:
  int getFacility() const { return m_facility; }
  int getLevel() const { return m_level; }

 private:
  void reportFailure(const char* description);

  int m_facility = 0;
  int m_level = 0;
  // These keep their room.
  I18NString m_line;
  I18NUtf8Buffer m_asciiLine;  // begins with the priority
  std::size_t m_prioritySize = 0;
};
