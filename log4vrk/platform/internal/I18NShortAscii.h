// Copying of short pieces of ASCII, of which most log messages are made.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Copies `count` bytes as two words, which overlap unless `count` is twice the size of a word; `count` is between that
/// and the size of one. Returns both words or-ed: a byte that is not ASCII shows in the top bits.
template <typename Word>
inline Word i18nCopyWords(const char* bytes, std::size_t count, char* out) {
  Word first, last;
  std::memcpy(&first, bytes, sizeof first);
  std::memcpy(&last, bytes + count - sizeof last, sizeof last);
  std::memcpy(out, &first, sizeof first);
  std::memcpy(out + count - sizeof last, &last, sizeof last);
  return first | last;
}

/// Copies up to 16 bytes and returns true when all are ASCII. Otherwise returns false; what `out` holds means nothing.
inline bool i18nCopyShortAscii(const char* bytes, std::size_t count, char* out) {
  if (count >= 8) return (i18nCopyWords<std::uint64_t>(bytes, count, out) & 0x8080808080808080u) == 0;
  if (count >= 4) return (i18nCopyWords<std::uint32_t>(bytes, count, out) & 0x80808080u) == 0;
  unsigned char seen = 0;
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = bytes[i];
    seen |= static_cast<unsigned char>(bytes[i]);
  }
  return seen < 0x80;
}
