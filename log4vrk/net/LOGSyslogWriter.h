// Sends text to a syslog daemon.

#pragma once

#include <string>

#include "log4vrk/appenders/LOGWriter.h"
#include "log4vrk/platform/internal/VRKDatagramSocket.h"

/// One datagram to port 514 for each text, as it stands. The host is shared by all syslog writers: whoever names one
/// names it for every writer that is initialised later.
///
/// Thread safety: called under the lock of the appender that owns it; the host may be asked for by any thread.
/// Errors: none is raised; a text that cannot be sent is lost with one line in the internal log.
class LOG4VRK_EXPORT LOGSyslogWriter : public LOGWriter {
 public:
  /// Makes `host`, a name or an address, the host of all writers.
  explicit LOGSyslogWriter(const I18NString& host);
  ~LOGSyslogWriter() override;

  /// Opens the socket and looks the host up, which may block. An empty host becomes "localhost". A host that cannot be
  /// resolved is reported, and stays unknown to this writer; a socket that cannot be had is not reported.
  void init();

  /// As many bytes of the text in UTF-8 as it has UTF-16 units, on purpose: what stands outside of ASCII costs the
  /// text as much at its end. Never waits.
  void write(const I18NString& text) override;
  /// The same of a text that is ASCII.
  [[gnu::always_inline]] void writeAscii(std::string_view text) {
    if (!m_socket.send(text.data(), text.size())) reportLoss();
  }
  void flush() override {}
  void close() override {}

  static I18NString getSyslogHost();

 private:
  static void reportLoss();

  VRKDatagramSocket m_socket;
  std::string m_bytes;  // keeps its room
};
