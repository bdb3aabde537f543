// A quiet writer that knows how much has been written.

#pragma once

#include <atomic>
#include <cstdint>

#include "log4vrk/appenders/LOGQuietWriter.h"

/// Counts the bytes that reach the file. What could not be written does not count, nor what a buffer still holds.
///
/// Thread safety: as LOGQuietWriter; the count may be read at any time.
class LOG4VRK_EXPORT LOGCountingQuietWriter : public LOGQuietWriter {
 public:
  using LOGQuietWriter::LOGQuietWriter;
  ~LOGCountingQuietWriter() override;

  using LOGQuietWriter::write;
  void write(VRKFmFile* outStream, const I18NString& text) override;

  /// The largest long when that is too narrow for the count.
  long getCount() const;
  void setCount(long count) { m_count = count; }
  /// Goes on from what the file holds already.
  void setCountToSizeOf(VRKFmFile* file);

 private:
  friend struct LOGLineWriter;
  void count(std::int64_t bytes) {
    m_count.store(m_count.load(std::memory_order_relaxed) + bytes, std::memory_order_relaxed);
  }

  std::atomic<std::int64_t> m_count{0};  // changed under the file lock, or before anybody writes
};
