// Sends text to a syslog daemon.

#pragma once

#include <string>

#include "log4vrk/appenders/LOGWriter.h"
#include "log4vrk/platform/internal/VRKDatagramSocket.h"

/// Sends one datagram to port 514 for each text. There is one host for all syslog writers: a writer that is initialised
/// sends to the one that was named last, and keeps to it when another is named.
///
/// Thread safety: not thread-safe; called under the lock of the appender that owns it. getSyslogHost(): any thread.
/// Errors: none is raised. A text that cannot be sent is lost with one line in the internal log.
class LOG4VRK_EXPORT LOGSyslogWriter : public LOGWriter {
 public:
  /// Makes `host`, a name or an address, the host for this and all later init() of any writer. Sends nothing yet.
  explicit LOGSyslogWriter(const I18NString& host);
  ~LOGSyslogWriter() override;

  /// Looks the host up, which may block, and opens the socket. An empty host becomes "localhost". A host that cannot be
  /// resolved is reported and not looked up again; a socket that cannot be opened is not reported. After either every
  /// write() fails.
  void init();

  /// Sends the text in UTF-8, but on purpose only as many bytes of it as it has UTF-16 units: a text with characters
  /// outside of ASCII loses its end. Never waits.
  void write(const I18NString& text) override;
  /// The same for a text that is ASCII, where bytes and units are as many.
  [[gnu::always_inline]] void writeAscii(std::string_view text) {
    if (!m_socket.send(text.data(), text.size())) reportLoss();
  }
  void flush() override {}
  void close() override {}

  /// The host that was named last.
  static I18NString getSyslogHost();

 private:
  static void reportLoss();

  VRKDatagramSocket m_socket;
  std::string m_bytes;  // a member to keep its memory
};
