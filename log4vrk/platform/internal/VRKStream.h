// A connection that never blocks, in the clear or not.

#pragma once

#include <cstddef>
#include <string>

#include "log4vrk/platform/VRKExport.h"

/// Thread safety: not thread-safe.
/// Errors: what fails returns so for good, and failure() says why, for people.
class LOG4VRK_EXPORT VRKStream {
 public:
  enum Progress { PENDING, READY, FAILED };

  VRKStream() = default;
  virtual ~VRKStream() = default;
  VRKStream(const VRKStream&) = delete;
  VRKStream& operator=(const VRKStream&) = delete;

  /// Goes on with connecting, as far as that goes without waiting. Once READY it need not be called again.
  virtual Progress advance() = 0;
  /// How many bytes it read; 0 when there are none yet, -1 when the connection is over.
  virtual long read(char* buffer, std::size_t size) = 0;
  /// How many bytes it took; 0 when it takes none yet, -1 when the connection is over.
  virtual long write(const char* bytes, std::size_t count) = 0;

  /// What to wait for between two calls: that the descriptor can be read, or, when the stream has something to write,
  /// written.
  virtual int descriptor() const = 0;
  virtual bool hasToWrite() const = 0;

  const std::string& failure() const { return m_failure; }

 protected:
  std::string m_failure;
};
