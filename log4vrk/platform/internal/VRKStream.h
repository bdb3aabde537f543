// The interface of a connection that never blocks, encrypted or not.

#pragma once

#include <cstddef>
#include <string>

/// Bytes to and from one peer. Its user waits for the descriptor between the calls.
///
/// Thread safety: not thread-safe.
/// Errors: none is raised. Once an operation has failed all of them fail, and failure() says why, for people.
class VRKStream {
 public:
  enum Progress { PENDING, READY, FAILED };

  VRKStream() = default;
  virtual ~VRKStream() = default;
  VRKStream(const VRKStream&) = delete;
  VRKStream& operator=(const VRKStream&) = delete;

  /// Goes on with connecting as far as that goes without waiting. It is called until it returns READY.
  virtual Progress advance() = 0;
  /// Returns how many bytes it has read: 0 when there are none yet, -1 when the connection is over.
  virtual long read(char* buffer, std::size_t size) = 0;
  /// Returns how many of the bytes it has taken: 0 when it takes none yet, -1 when the connection is over.
  virtual long write(const char* bytes, std::size_t count) = 0;

  /// What to wait for between two calls: until it can be read or, when hasToWrite(), written.
  virtual int descriptor() const = 0;
  /// Whether the stream itself has something to write, such as a step of connecting.
  virtual bool hasToWrite() const = 0;

  const std::string& failure() const { return m_failure; }

 protected:
  std::string m_failure;
};
