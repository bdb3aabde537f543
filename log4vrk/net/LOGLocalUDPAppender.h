// The appender that sends message objects to a process on the same machine.

#pragma once

#include <atomic>
#include <memory>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/platform/internal/VRKDatagramSocket.h"

/// Sends each event as one UDP datagram to a port of "localhost". The datagram is a stream of Java's object
/// serialization with the name of the logger and the message object, as its renderer writes it
/// (LOGObjectRenderer::writeExtHeader and writeExtData). A message whose class has no renderer arrives without its
/// text. A layout is not used.
///
/// Thread safety: any thread.
/// Errors: nothing is reported, neither that nobody listens nor that a message is larger than a datagram, which is then
/// lost. A null message raises VRKAssertError. A socket that cannot be opened is tried again before every event.
class LOG4VRK_EXPORT LOGLocalUDPAppender : public LOGAppenderSkeleton {
 public:
  static const I18NString& PORT_OPTION;  // "Port"
  static constexpr long DEFAULT_PORT = 9362;
  /// The largest datagram, in bytes.
  static constexpr long LARGEST_DATAGRAM = 65504;

  LOGLocalUDPAppender();
  /// A copy sends through a descriptor of its own.
  LOGLocalUDPAppender(const LOGLocalUDPAppender& other);
  LOGLocalUDPAppender& operator=(const LOGLocalUDPAppender& other);
  ~LOGLocalUDPAppender() override;

  /// Takes effect with the next init() that opens a socket. Outside 1 to 65535 nothing arrives anywhere.
  void setPort(long port) { m_port.store(port, std::memory_order_relaxed); }
  long getPort() const { return m_port.load(std::memory_order_relaxed); }

  /// Calls init() when closed, also after close(): a closed appender opens again with the next event, on purpose.
  void activateOptions() override;
  /// Opens the socket, when closed. On failure the appender stays closed.
  void init();
  void append(LOGLoggingEvent* event) override;
  /// Keeps the socket until the next init(), on purpose: doAppend() goes on sending.
  void close() override;

  /// Equal when the bases, the closed flags and the ports are.
  bool operator==(const LOGObject& other) const override;
  bool operator!=(const LOGObject& other) const override;

 private:
  class Datagram;

  LOG4VRK_HIDDEN void openSocket() VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN bool build(Datagram& datagram, LOGLoggingEvent& event, LOGObject& message) VRK_REQUIRES(m_critSection);

  std::atomic<long> m_port{DEFAULT_PORT};
  std::atomic<int> m_socketClosed{1};  // instead of the base's flag, so that doAppend() never refuses an event
  VRKDatagramSocket m_socket VRK_GUARDED_BY(m_critSection);
  std::unique_ptr<unsigned char[]> m_buffer
      VRK_GUARDED_BY(m_critSection);  // a datagram, and room behind it; null until the first event
};
