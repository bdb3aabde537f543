// The appender that sends message objects to a process on the same machine.

#pragma once

#include <atomic>
#include <memory>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/platform/internal/VRKDatagramSocket.h"

/// Sends each event as one UDP datagram to a port of "localhost": the name of the logger, and the message object as its
/// renderer writes it (LOGObjectRenderer::writeExtHeader and writeExtData), as a stream of Java's object serialization.
/// A class without a renderer of its own arrives without text. There is no layout.
///
/// Thread safety: any thread.
/// Errors: none is reported, whether nobody listens or a message is larger than a datagram; a null message raises
/// VRKAssertError. A socket that cannot be had is tried again before every event.
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

  /// For the next init(). A port outside 1 to 65535 has no listener.
  void setPort(long port) { m_port.store(port, std::memory_order_relaxed); }
  long getPort() const { return m_port.load(std::memory_order_relaxed); }

  /// Calls init() when closed. Opens again after close(), on purpose.
  void activateOptions() override;
  /// Takes the socket, when closed.
  void init();
  void append(LOGLoggingEvent* event) override;
  /// Keeps the socket until the next init(); doAppend() goes on sending.
  void close() override;

  /// Equal when the base is, and closed flag and port are.
  bool operator==(const LOGObject& other) const override;
  bool operator!=(const LOGObject& other) const override;

 private:
  class Datagram;

  void openSocket() VRK_REQUIRES(m_critSection);
  bool build(Datagram& datagram, LOGLoggingEvent& event, LOGObject& message) VRK_REQUIRES(m_critSection);

  std::atomic<long> m_port{DEFAULT_PORT};
  std::atomic<int> m_socketClosed{1};  // the base is never closed
  VRKDatagramSocket m_socket VRK_GUARDED_BY(m_critSection);
  std::unique_ptr<unsigned char[]> m_buffer
      VRK_GUARDED_BY(m_critSection);  // one datagram, and room for what is too much
};
