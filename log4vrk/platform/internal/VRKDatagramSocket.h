// The socket of an appender that sends datagrams.

#pragma once

#include <cstddef>

#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKSocketAddress.h"

/// Sends datagrams to one destination. Failures are returned, not raised, and nothing is known of what becomes of a
/// datagram that was sent.
///
/// Thread safety: not thread-safe; the caller holds the lock of whoever owns the socket. A forked child may go on with
/// its parent's.
/// Ownership: the descriptor is the socket's and does not outlive an exec. A copy has a descriptor of its own, of the
/// same system socket.
class LOG4VRK_EXPORT VRKDatagramSocket {
 public:
  VRKDatagramSocket() = default;
  ~VRKDatagramSocket();
  VRKDatagramSocket(const VRKDatagramSocket& other);
  VRKDatagramSocket(VRKDatagramSocket&& other) noexcept;
  VRKDatagramSocket& operator=(VRKDatagramSocket other) noexcept;

  /// Binds a new socket to `local`, whose family is that of the destination to come. What was open before is closed.
  bool open(const VRKSocketAddress& local);
  /// Of the system's buffers for sending and for receiving.
  bool setBufferSizes(int bytes);
  /// From here on send() never waits: what the system has no room for is lost.
  bool setNonBlocking();
  /// Where send() sends to. An address that is not valid makes every send() fail.
  void setDestination(const VRKSocketAddress& destination);
  /// One datagram. False when the system has refused it; that nobody listened to an earlier one is no such case.
  bool send(const void* bytes, std::size_t count);
  /// May be repeated.
  void close();

  bool isOpen() const { return m_descriptor >= 0; }

 private:
  void connect();
  bool sendOnce(const void* bytes, std::size_t count);

  int m_descriptor = -1;
  bool m_connected = false;  // the system knows the destination, and need not look for the way at every datagram
  VRKSocketAddress m_destination{VRKSocketAddress::BUILT_IN_INTERFACE};
};
