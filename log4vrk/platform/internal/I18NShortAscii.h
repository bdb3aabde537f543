// Copying of short pieces of ASCII, of which most log messages are made.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// What a word of bytes shows in its top bits: the bytes that are not ASCII.
struct I18NNotAscii {
  template <typename Word>
  static constexpr Word in(Word first, Word last) {
    return first | last;
  }
};

/// The same, and zero bytes: below them nothing is borrowed from the next byte, so the lowest one always shows.
struct I18NNotText {
  template <typename Word>
  static constexpr Word in(Word first, Word last) {
    constexpr Word ONES = static_cast<Word>(0x0101010101010101u);
    return (first - ONES) | first | (last - ONES) | last;
  }
};

/// Copies `count` bytes as two words, which overlap unless `count` is twice the size of a word; `count` is between that
/// and the size of one. Returns what `Seen` finds in them.
template <typename Seen, typename Word>
inline Word i18nCopyWords(const char* bytes, std::size_t count, char* out) {
  Word first, last;
  std::memcpy(&first, bytes, sizeof first);
  std::memcpy(&last, bytes + count - sizeof last, sizeof last);
  std::memcpy(out, &first, sizeof first);
  std::memcpy(out + count - sizeof last, &last, sizeof last);
  return Seen::in(first, last);
}

/// Copies up to 16 bytes and returns true when `Seen` finds nothing in them. Otherwise returns false; what `out` holds
/// means nothing.
template <typename Seen>
inline bool i18nCopyShort(const char* bytes, std::size_t count, char* out) {
  if (count >= 8) return (i18nCopyWords<Seen, std::uint64_t>(bytes, count, out) & 0x8080808080808080u) == 0;
  if (count >= 4) return (i18nCopyWords<Seen, std::uint32_t>(bytes, count, out) & 0x80808080u) == 0;
  unsigned seen = 0;
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = bytes[i];
    const unsigned byte = static_cast<unsigned char>(bytes[i]);
    seen |= Seen::in(byte, byte);
  }
  return (seen & 0x80) == 0;
}
inline bool i18nCopyShortAscii(const char* bytes, std::size_t count, char* out) {
  return i18nCopyShort<I18NNotAscii>(bytes, count, out);
}
/// The same, but a zero byte counts as if it were not ASCII.
inline bool i18nCopyShortText(const char* bytes, std::size_t count, char* out) {
  return i18nCopyShort<I18NNotText>(bytes, count, out);
}
