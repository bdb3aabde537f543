// Compression: a library of its own, so that only programs that want it load zlib and zstd.

#include "log4vrk/platform/internal/VRKCompressModule.h"

#define ZLIB_CONST  // so that input is const
#include <zlib.h>
#include <zstd.h>

#include <memory>
#include <new>

namespace {

constexpr std::size_t ROOM = 64 * 1024;

class Gzip : public VRKCompressor {
 public:
  Gzip()
      : m_isReady(::deflateInit2(&m_stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + GZIP_HEADER, 8,
                                 Z_DEFAULT_STRATEGY) == Z_OK) {}
  ~Gzip() override {
    if (m_isReady) ::deflateEnd(&m_stream);
  }
  Gzip(const Gzip&) = delete;
  Gzip& operator=(const Gzip&) = delete;

  bool isReady() const { return m_isReady; }

  bool add(const char* bytes, std::size_t count, bool isLast, Sink sink, void* context) override {
    m_stream.next_in = reinterpret_cast<const Bytef*>(bytes);
    m_stream.avail_in = static_cast<uInt>(count);
    do {
      m_stream.next_out = m_room;
      m_stream.avail_out = ROOM;
      if (::deflate(&m_stream, isLast ? Z_FINISH : Z_NO_FLUSH) == Z_STREAM_ERROR) return false;
      const std::size_t made = ROOM - m_stream.avail_out;
      if (made > 0 && !sink(context, reinterpret_cast<const char*>(m_room), made)) return false;
    } while (m_stream.avail_out == 0);
    return true;
  }

 private:
  static constexpr int GZIP_HEADER = 16;

  z_stream m_stream{};
  const bool m_isReady;
  Bytef m_room[ROOM];
};

class Zstd : public VRKCompressor {
 public:
  Zstd() : m_context(::ZSTD_createCCtx(), &::ZSTD_freeCCtx) {
    if (m_context) ::ZSTD_CCtx_setParameter(m_context.get(), ZSTD_c_checksumFlag, 1);
  }

  bool isReady() const { return m_context != nullptr; }

  bool add(const char* bytes, std::size_t count, bool isLast, Sink sink, void* context) override {
    ZSTD_inBuffer in{bytes, count, 0};
    for (;;) {
      ZSTD_outBuffer out{m_room, ROOM, 0};
      const std::size_t left =
          ::ZSTD_compressStream2(m_context.get(), &out, &in, isLast ? ZSTD_e_end : ZSTD_e_continue);
      if (::ZSTD_isError(left) != 0) return false;
      if (out.pos > 0 && !sink(context, m_room, out.pos)) return false;
      if (isLast ? left == 0 : in.pos == in.size) return true;
    }
  }

 private:
  const std::unique_ptr<ZSTD_CCtx, std::size_t (*)(ZSTD_CCtx*)> m_context;
  char m_room[ROOM];
};

template <typename Kind>
VRKCompressor* make() {
  std::unique_ptr<Kind> made(new (std::nothrow) Kind);
  return made && made->isReady() ? made.release() : nullptr;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) VRKCompressor* vrkCompressMake1(int format);

VRKCompressor* vrkCompressMake1(int format) { return format == VRKCompressor::ZSTD ? make<Zstd>() : make<Gzip>(); }
