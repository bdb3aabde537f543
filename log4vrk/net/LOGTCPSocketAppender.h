// The appender that delivers to a log server over TCP.

#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/platform/VRKExport.h"

class LOGConnector;
class LOGEventEncoder;
class LOGOutbox;
struct LOGLogServer;

/// Delivers each event at least once to a server that speaks RELP, such as a syslog daemon, in the clear or over TLS,
/// through restarts of either side. See docs/log-server.md for what is promised, and for how a receiver tells
/// repetitions.
///
/// A log call renders the event (with the layout when there is one), puts it into a bounded queue and returns: it waits
/// neither for the network nor for the disk. The queue is in memory that outlives a kill of the process, for the next
/// start to deliver. A thread of the appender sends. What the server has not acknowledged when the connection goes,
/// when the queue is half full, after half a second or when the appender closes is kept in files under
/// "../logs/recovery/local" and sent first when there is a connection again, by this process or the next. Only while
/// events come faster than they can be sent or kept, a log call waits for space in the queue, at most
/// LONGEST_WAIT_FOR_SPACE, and then drops its event.
///
/// Thread safety: any thread. Settings of the server that are made later hold at once: there is a new connection.
/// Errors: a server that cannot be reached, a certificate that is refused, events that are dropped: one line in the
/// internal log when that begins. While the system has no thread to give, log calls put the events into the files.
/// Where the queue's memory cannot outlive the process, a line says so, and a kill takes along what no file has yet.
/// Forks: a child has a queue, a connection and a stream of its own from its first event; what was queued is the
/// parent's.
class LOG4VRK_EXPORT LOGTCPSocketAppender : public LOGAppenderSkeleton {
 public:
  static constexpr long DEFAULT_PORT = 2514;
  static constexpr long DEFAULT_RECONNECTION_DELAY = 30000;
  static constexpr long LONGEST_WAIT_FOR_SPACE = 100;  // milliseconds

  LOGTCPSocketAppender();
  LOGTCPSocketAppender(const LOGTCPSocketAppender&) = delete;
  LOGTCPSocketAppender& operator=(const LOGTCPSocketAppender&) = delete;
  ~LOGTCPSocketAppender() override;

  /// Starts the sending thread. Without a remote host the appender stays closed; once closed it is not opened again.
  void activateOptions() override;
  void append(LOGLoggingEvent* event) override;
  bool requiresLayout() override { return false; }
  /// Waits for acknowledgements, at most 1.5 seconds and only while there is a connection. What is left is in the
  /// recovery files when it returns.
  void close() override;

  /// A name or an address.
  void setRemoteHost(const I18NString& host);
  I18NString getRemoteHost() const;
  void setPort(long port);
  long getPort() const { return m_port; }
  /// Not 0: the place of the log call goes along.
  void setLocationInfo(int on) { m_locationInfo = on; }
  int getLocationInfo() const { return m_locationInfo; }
  /// Not 0: TLS 1.2 or newer, with a server certificate for the remote host from a known authority.
  void setSecure(int on);
  int getSecure() const { return m_secure; }
  /// The longest time between two attempts to connect, in milliseconds. They begin 20 milliseconds apart and become
  /// rarer. A day at most.
  void setReconnectionDelay(long milliseconds);
  long getReconnectionDelay() const { return m_reconnectionDelay; }

  // PEM files for TLS, as seen from the working directory of now. Without one of authorities: those of the system, or
  // those that SSL_CERT_FILE and SSL_CERT_DIR name.
  void setAuthorities(const I18NString& file);
  /// What the client shows to a server that asks. Without a key file the key is in the certificate's. A key that needs
  /// a passphrase cannot be used.
  void setCertificate(const I18NString& certificateFile, const I18NString& keyFile = I18NString());

  // Events since the appender was made or, in a child, since its first event.
  /// Handed to a connection, repetitions included.
  std::uint64_t getSent() const;
  std::uint64_t getAcknowledged() const;
  /// Now in the recovery files, not acknowledged. What earlier processes left counts.
  std::uint64_t getInRecovery() const;
  /// Lost for want of space or by a failing disk, set aside because the server does not take them, or left by close()
  /// in memory that does not outlive the process.
  std::uint64_t getDropped() const;

 private:
  LOG4VRK_HIDDEN bool isActive() const;
  LOG4VRK_HIDDEN void start() VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void tryThread() VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN LOGLogServer server() const VRK_REQUIRES(m_critSection);
  template <typename Setting, typename Value>
  LOG4VRK_HIDDEN void change(Setting& setting, const Value& value) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN std::string render(LOGLoggingEvent* event);
  LOG4VRK_HIDDEN void put(LOGLoggingEvent* event);

  // Settings.
  std::atomic<long> m_port{DEFAULT_PORT};
  std::atomic<long> m_reconnectionDelay{DEFAULT_RECONNECTION_DELAY};
  std::atomic<int> m_locationInfo{0};
  std::atomic<int> m_secure{0};
  I18NString m_remoteHost VRK_GUARDED_BY(m_critSection);
  I18NString m_authorities VRK_GUARDED_BY(m_critSection);
  std::pair<I18NString, I18NString> m_certificate VRK_GUARDED_BY(m_critSection);  // and its key

  std::atomic<unsigned> m_forks;  // of the process whose connector this is
  std::atomic<bool> m_fullSaid{false};
  std::atomic<bool> m_lacksThread{false};  // open, but nobody sends
  std::chrono::steady_clock::time_point m_nextStart VRK_GUARDED_BY(m_critSection);
  bool m_hostMissed VRK_GUARDED_BY(m_critSection) = false;
  bool m_wasClosed VRK_GUARDED_BY(m_critSection) = false;

  // For log calls: set before the appender opens, and once more in the child of a fork, before anybody uses it there.
  std::shared_ptr<LOGOutbox> m_outbox;
  std::unique_ptr<const LOGEventEncoder> m_encoder;

  std::shared_ptr<LOGConnector> m_connector VRK_GUARDED_BY(m_critSection);
};
