// The socket of an appender that sends datagrams.

#pragma once

#include <cstddef>

#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKSocketAddress.h"

/// Sends datagrams to one destination. What becomes of a datagram that the system has taken is not known.
///
/// Thread safety: not thread-safe; the caller holds the lock of the socket's owner. A forked child may go on sending
/// through its parent's socket.
/// Ownership: the descriptor is this object's, and is closed by an exec. A copy duplicates the descriptor, and
/// both lead to one socket of the system.
/// Errors: operations return false when the system refuses; none is raised.
class LOG4VRK_EXPORT VRKDatagramSocket {
 public:
  VRKDatagramSocket() = default;
  ~VRKDatagramSocket();
  VRKDatagramSocket(const VRKDatagramSocket& other);
  VRKDatagramSocket(VRKDatagramSocket&& other) noexcept;
  VRKDatagramSocket& operator=(VRKDatagramSocket other) noexcept;

  /// Opens a new socket, bound to `local`, and closes the one before. `local` has the family of the later destination.
  bool open(const VRKSocketAddress& local);
  /// Sets the sizes of the system's buffers for sending and for receiving.
  bool setBufferSizes(int bytes);
  /// From here on send() never waits: it fails when the system has no room.
  bool setNonBlocking();
  /// Sets where send() sends to. With an address that is not valid every send() fails.
  void setDestination(const VRKSocketAddress& destination);
  /// Sends one datagram. False when the system refuses it. That nobody listened to an earlier one is no reason.
  bool send(const void* bytes, std::size_t count);
  /// Does nothing when the socket is closed.
  void close();

  bool isOpen() const { return m_descriptor >= 0; }

 private:
  LOG4VRK_HIDDEN void connect();
  bool sendOnce(const void* bytes, std::size_t count);

  int m_descriptor = -1;
  bool m_connected = false;  // the system knows the destination, and does not look its route up for each datagram
  VRKSocketAddress m_destination{VRKSocketAddress::BUILT_IN_INTERFACE};
};
