// The appender that writes to a syslog daemon.

#pragma once

#include <atomic>
#include <memory>

#include "log4vrk/core/LOGAppenderSkeleton.h"

class LOGSyslogQuietWriter;
class LOGSyslogWriter;

/// Sends each formatted event as a UDP datagram to port 514 of a host. Needs a layout. Log calls never wait for the
/// network, and nothing is known of what the daemon does with a datagram, or whether there is one.
///
/// Thread safety: any thread.
/// Errors: a datagram that the system refuses is lost with one line in the internal log.
class LOG4VRK_EXPORT LOGSyslogAppender : public LOGAppenderSkeleton {
 public:
  static const I18NString& TAB;  // in front of the text of a throwable

  /// The facility is "user", and is not printed.
  LOGSyslogAppender();
  ~LOGSyslogAppender() override;

  /// The code of a facility's name in any case ("local0" is 128), or -1.
  static int getFacility(const I18NString& name);
  /// The name in lower case, or the empty text.
  static I18NString getFacilityString(int code);

  /// An unknown name is taken for "user"; an empty one changes nothing.
  void setFacility(const I18NString& name);
  I18NString getFacility() const;
  /// 1 puts the facility's name and a colon in front of each message.
  void setFacilityPrinting(int printing);
  int getFacilityPrinting() const;

  /// Takes a new socket to the host, and may block while its name is looked up. The host is that of all syslog
  /// appenders that are activated later.
  void setSyslogHost(const I18NString& host);
  /// The one that was set last, on whatever appender.
  I18NString getSyslogHost() const;

  /// Takes the socket, unless there is one; the host is the one set last, or "localhost". Nothing after close().
  void activateOptions() override;
  void append(LOGLoggingEvent* event) override;
  void close() override;
  /// True: without a layout nothing is sent.
  bool requiresLayout() override;

 private:
  struct Facility;
  static const Facility FACILITIES[];
  static const LOGAppenderInternals INTERNALS;

  void openWriter(const I18NString& host) VRK_REQUIRES(m_critSection);
  void send(LOGLoggingEvent& event) VRK_REQUIRES(m_critSection);
  bool isReady() VRK_REQUIRES(m_critSection);
  /// Sends a line that has been formatted.
  void writeLine(const LOGLoggingEvent& event, std::string_view line) VRK_REQUIRES(m_critSection);

  std::atomic<bool> m_active{false};  // there is a quiet writer
  int m_facility VRK_GUARDED_BY(m_critSection);
  I18NString m_facilityString VRK_GUARDED_BY(m_critSection);
  int m_facilityPrinting VRK_GUARDED_BY(m_critSection) = 0;
  I18NString m_message VRK_GUARDED_BY(m_critSection);  // keeps its room
  std::unique_ptr<LOGSyslogWriter> m_writer VRK_GUARDED_BY(m_critSection);
  std::unique_ptr<LOGSyslogQuietWriter> m_qw VRK_GUARDED_BY(m_critSection);  // of m_writer
};
