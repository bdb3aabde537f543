// The appender that writes to a syslog daemon.

#pragma once

#include <atomic>
#include <memory>

#include "log4vrk/core/LOGAppenderSkeleton.h"

class LOGSyslogQuietWriter;
class LOGSyslogWriter;

/// Sends each formatted event as a UDP datagram to port 514 of a host. It needs a layout. Log calls never wait for the
/// network. Whether a daemon is there, and what it does with a datagram, is not known here.
///
/// Thread safety: any thread.
/// Ownership: sockets and writers are the appender's, and are freed by close().
/// Errors: a datagram that the system refuses is lost with one line in the internal log. An event without a level
/// raises VRKAssertError, which ends there too.
class LOG4VRK_EXPORT LOGSyslogAppender : public LOGAppenderSkeleton {
 public:
  static const I18NString& TAB;  // four blanks, in front of the text of a throwable

  /// The facility is "user" and is not printed. There is no socket until a host is set or the appender is activated.
  LOGSyslogAppender();
  ~LOGSyslogAppender() override;

  /// The code of a facility, its name in any case: 8 times its number, so "local0" is 128. -1 for an unknown name.
  static int getFacility(const I18NString& name);
  /// The facility's name in lower case; empty for a code that has none.
  static I18NString getFacilityString(int code);

  /// Takes the name of a facility in any case. An unknown name is taken for "user", an empty one changes nothing.
  void setFacility(const I18NString& name);
  I18NString getFacility() const;
  /// 1 puts the facility's name and a colon in front of each message; any other value does not.
  void setFacilityPrinting(int printing);
  int getFacilityPrinting() const;

  /// Opens a new socket to the host, and may block while its name is looked up. All syslog appenders that are activated
  /// later send to this host, too, unless they are given one of their own.
  void setSyslogHost(const I18NString& host);
  /// The host that was set last, on whichever appender.
  I18NString getSyslogHost() const;

  /// Opens the socket, unless there is one, to the host that was set last or to "localhost". Does nothing after
  /// close().
  void activateOptions() override;
  /// Sends the event as one datagram. The text of a throwable follows in another, behind TAB.
  void append(LOGLoggingEvent* event) override;
  /// Closes for good: activateOptions() does not open the appender again.
  void close() override;
  /// True: without a layout nothing is sent.
  bool requiresLayout() override;

 private:
  struct Facility;
  static const Facility FACILITIES[];
  LOG4VRK_HIDDEN static const LOGAppenderInternals INTERNALS;

  LOG4VRK_HIDDEN void openWriter(const I18NString& host) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void send(LOGLoggingEvent& event) VRK_REQUIRES(m_critSection);
  bool isReady() VRK_REQUIRES(m_critSection);
  /// Sends a line that has been formatted.
  void writeLine(const LOGLoggingEvent& event, std::string_view line) VRK_REQUIRES(m_critSection);

  std::atomic<bool> m_active{false};  // there is a quiet writer; read without the lock
  int m_facility VRK_GUARDED_BY(m_critSection);
  I18NString m_facilityString VRK_GUARDED_BY(m_critSection);
  int m_facilityPrinting VRK_GUARDED_BY(m_critSection) = 0;
  I18NString m_message VRK_GUARDED_BY(m_critSection);  // a member to keep its memory
  std::unique_ptr<LOGSyslogWriter> m_writer VRK_GUARDED_BY(m_critSection);
  std::unique_ptr<LOGSyslogQuietWriter> m_qw VRK_GUARDED_BY(m_critSection);  // writes to m_writer
};
