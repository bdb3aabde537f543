// The part of text conversion that nearly all text needs: ASCII in and out, a block of units at a time.

#pragma once

#include <cstddef>
#include <cstring>

#include "log4vrk/platform/internal/I18NShortAscii.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Each function converts `count` units to `out` and returns true when all of them are ASCII. Otherwise it returns
// false, and what `out` holds means nothing. There is one test after all blocks, because text that
// is not ASCII is rare.
//
// The last block ends with the last unit and may overlap the one before it, so that no rest needs a loop of its own.

inline bool i18nCopyAscii(const char* bytes, std::size_t count, char* out) {
#ifdef __SSE2__
  if (count >= 16) {
    __m128i seen = _mm_setzero_si128();
    const auto copy = [&](std::size_t at) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at));
      seen = _mm_or_si128(seen, block);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + at), block);
    };
    for (std::size_t i = 0; i + 16 < count; i += 16) copy(i);
    copy(count - 16);
    return _mm_movemask_epi8(seen) == 0;
  }
#endif
  if (count <= 16) return i18nCopyShortAscii(bytes, count, out);
  std::uint64_t seen = 0;
  const auto copy = [&](std::size_t at) {
    seen |= i18nCopyWords<I18NNotAscii, std::uint64_t>(bytes + at, 8, out + at);
  };
  for (std::size_t i = 0; i + 8 < count; i += 8) copy(i);
  copy(count - 8);
  return (seen & 0x8080808080808080u) == 0;
}

// Packing saturates units that are no bytes, and so hides them. The test looks at the units as they were read.
inline bool i18nNarrowAscii(const char16_t* units, std::size_t count, char* out) {
#ifdef __SSE2__
  if (count >= 8) {
    __m128i seen = _mm_setzero_si128();
    const auto narrow = [&](std::size_t at) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + at));
      seen = _mm_or_si128(seen, block);
      _mm_storel_epi64(reinterpret_cast<__m128i*>(out + at), _mm_packus_epi16(block, block));
    };
    for (std::size_t i = 0; i + 8 < count; i += 8) narrow(i);
    narrow(count - 8);
    const __m128i others = _mm_and_si128(seen, _mm_set1_epi16(static_cast<short>(0xFF80)));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(others, _mm_setzero_si128())) == 0xFFFF;
  }
  if (count >= 4) {
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(units));
    const __m128i last = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(units + count - 4));
    const auto store = [out](std::size_t at, __m128i block) {
      const int four = _mm_cvtsi128_si32(_mm_packus_epi16(block, block));
      std::memcpy(out + at, &four, sizeof four);
    };
    store(0, first);
    store(count - 4, last);
    const __m128i others = _mm_and_si128(_mm_or_si128(first, last), _mm_set1_epi16(static_cast<short>(0xFF80)));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(others, _mm_setzero_si128())) == 0xFFFF;
  }
#endif
  char16_t seen = 0;
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = static_cast<char>(units[i]);
    seen |= units[i];
  }
  return seen < 0x80;
}

inline bool i18nWidenAscii(const char* bytes, std::size_t count, char16_t* out) {
#ifdef __SSE2__
  if (count >= 8) {
    __m128i seen = _mm_setzero_si128();
    const auto widen = [&](std::size_t at) {
      const __m128i block = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes + at));
      seen = _mm_or_si128(seen, block);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + at), _mm_unpacklo_epi8(block, _mm_setzero_si128()));
    };
    for (std::size_t i = 0; i + 8 < count; i += 8) widen(i);
    widen(count - 8);
    return _mm_movemask_epi8(seen) == 0;
  }
#endif
  unsigned char seen = 0;
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[i]));
    seen |= static_cast<unsigned char>(bytes[i]);
  }
  return seen < 0x80;
}

inline bool i18nIsAscii(const char* bytes, std::size_t count) {
#ifdef __SSE2__
  if (count >= 16) {
    const auto load = [bytes](std::size_t at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at)); };
    __m128i seen = load(count - 16);
    for (std::size_t i = 0; i + 16 < count; i += 16) seen = _mm_or_si128(seen, load(i));
    return _mm_movemask_epi8(seen) == 0;
  }
#endif
  unsigned char seen = 0;
  for (std::size_t i = 0; i < count; ++i) seen |= static_cast<unsigned char>(bytes[i]);
  return seen < 0x80;
}
