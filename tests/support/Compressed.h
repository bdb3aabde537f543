// Reads log files as they are, and as they are compressed.

#pragma once

#include <zlib.h>
#include <zstd.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace vrktest {

/// What a file holds, uncompressed when its name ends in .gz or .zst. Raises std::runtime_error when that is damaged or
/// cut short.
inline std::string contentOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(in), {}}, text, room(1 << 16, '\0');
  const bool isGzip = path.size() > 3 && path.substr(path.size() - 3) == ".gz";
  const bool isZstd = path.size() > 4 && path.substr(path.size() - 4) == ".zst";
  if (isGzip) {
    z_stream stream{};
    stream.next_in = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    int result = ::inflateInit2(&stream, MAX_WBITS + 16);
    while (result == Z_OK) {
      stream.next_out = reinterpret_cast<Bytef*>(room.data());
      stream.avail_out = static_cast<uInt>(room.size());
      result = ::inflate(&stream, Z_NO_FLUSH);
      text.append(room, 0, room.size() - stream.avail_out);
    }
    ::inflateEnd(&stream);
    if (result != Z_STREAM_END || stream.avail_in != 0) throw std::runtime_error(path + " is damaged");
    return text;
  }
  if (!isZstd) return bytes;
  const std::unique_ptr<ZSTD_DCtx, std::size_t (*)(ZSTD_DCtx*)> context(::ZSTD_createDCtx(), &::ZSTD_freeDCtx);
  ZSTD_inBuffer input{bytes.data(), bytes.size(), 0};
  for (std::size_t left = 1; left != 0;) {
    ZSTD_outBuffer output{room.data(), room.size(), 0};
    left = ::ZSTD_decompressStream(context.get(), &output, &input);
    const bool isStuck = output.pos == 0 && input.pos == input.size && left != 0;
    if (::ZSTD_isError(left) != 0 || isStuck) throw std::runtime_error(path + " is damaged");
    text.append(room, 0, output.pos);
  }
  return text;
}

inline std::vector<std::string> linesIn(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

}  // namespace vrktest
