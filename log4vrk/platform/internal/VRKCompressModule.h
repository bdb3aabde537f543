// What the library and its module for compression, tovlog4vrk-compress.so, say to each other.

#pragma once

#include <cstddef>

constexpr char VRK_COMPRESS_MODULE[] = "tovlog4vrk-compress.so";

/// Compresses one stream.
///
/// Thread safety: not thread-safe.
class VRKCompressor {
 public:
  enum Format { GZIP, ZSTD };
  /// Takes what has been made. False ends the work.
  using Sink = bool (*)(void* context, const char* bytes, std::size_t count);

  virtual ~VRKCompressor() = default;
  /// The next bytes of the stream, with `isLast` the last of them. False when the sink has refused, or there is no
  /// memory.
  virtual bool add(const char* bytes, std::size_t count, bool isLast, Sink sink, void* context) = 0;
};

/// The module's one function, by this name: it changes whenever anything here does. The caller deletes the result,
/// which is null when there is no memory. Thread safety: any thread.
constexpr char VRK_COMPRESS_MAKE[] = "vrkCompressMake1";
using VRKCompressMake = VRKCompressor* (*)(int format);
