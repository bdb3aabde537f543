#include "log4vrk/layouts/internal/LOGEscape.h"

#include <algorithm>
#include <array>
#include <string>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

// What a byte can be the beginning of.
enum Kind : unsigned char { PLAIN, ESCAPED, MAYBE_ESCAPED };

constexpr std::array<Kind, 256> kindsOf(bool isJson) {
  std::array<Kind, 256> kinds{};
  for (std::size_t byte = 0; byte < 0x20; ++byte) kinds[byte] = ESCAPED;
  kinds[0x7F] = kinds['\\'] = ESCAPED;
  if (isJson) kinds['"'] = ESCAPED;
  kinds[0xC2] = kinds[0xD8] = kinds[0xE2] = MAYBE_ESCAPED;  // U+0080 on, U+0600 on, U+2000 on
  return kinds;
}
constexpr std::array<Kind, 256> JSON_KINDS = kindsOf(true), SAFE_KINDS = kindsOf(false);

// The character of two or three bytes at the beginning of a well-formed text. 0 when it stands as it is.
char16_t escapedCharacter(std::string_view utf8) {
  const auto bits = [&](std::size_t at) { return static_cast<char16_t>(static_cast<unsigned char>(utf8[at]) & 0x3F); };
  const unsigned char lead = static_cast<unsigned char>(utf8[0]);
  if (utf8.size() < 2) return 0;
  if (lead != 0xE2) {
    const auto character = static_cast<char16_t>((lead & 0x1F) << 6 | bits(1));
    return character < 0xA0 || character == 0x061C ? character : u'\0';
  }
  if (utf8.size() < 3) return 0;
  const auto character = static_cast<char16_t>(0x2000 | bits(1) << 6 | bits(2));
  const bool isEscaped = character == 0x200E || character == 0x200F || (character >= 0x2028 && character <= 0x202E) ||
                         (character >= 0x2066 && character <= 0x2069);
  return isEscaped ? character : u'\0';
}

// How many bytes from `at` on certainly stand as they are.
template <bool isJson>
std::size_t skipPlain(std::string_view utf8, std::size_t at) {
#ifdef __SSE2__
  const __m128i lowest = _mm_set1_epi8(0x20), backslash = _mm_set1_epi8('\\'), last = _mm_set1_epi8(0x7F),
                quote = _mm_set1_epi8(isJson ? '"' : '\\');
  // The last block ends with the text and overlaps the one before it.
  while (utf8.size() >= 16 && at < utf8.size()) {
    const std::size_t from = std::min(at, utf8.size() - 16);
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(utf8.data() + from));
    // Signed, so that everything outside ASCII is low, too.
    const __m128i found = _mm_or_si128(_mm_or_si128(_mm_cmplt_epi8(block, lowest), _mm_cmpeq_epi8(block, quote)),
                                       _mm_or_si128(_mm_cmpeq_epi8(block, backslash), _mm_cmpeq_epi8(block, last)));
    const unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(found)) >> (at - from);
    if (mask != 0) {
      at += static_cast<std::size_t>(__builtin_ctz(mask));
      break;
    }
    at = from + 16;
  }
#endif
  const auto& kinds = isJson ? JSON_KINDS : SAFE_KINDS;
  while (at < utf8.size() && kinds[static_cast<unsigned char>(utf8[at])] == PLAIN) ++at;
  return at;
}

// The first character from `at` on that is escaped, and how many bytes it has; the text's length when there is none.
struct Found {
  std::size_t at;
  char16_t character;
  std::size_t length;
};
template <bool isJson>
Found findEscaped(std::string_view utf8, std::size_t at) {
  for (;;) {
    at = skipPlain<isJson>(utf8, at);
    if (at == utf8.size()) return {at, 0, 0};
    const unsigned char byte = static_cast<unsigned char>(utf8[at]);
    if (byte < 0x80) return {at, byte, 1};
    if (const char16_t character = escapedCharacter(utf8.substr(at))) {
      return {at, character, byte == 0xE2 ? std::size_t{3} : std::size_t{2}};
    }
    ++at;
  }
}

void appendHex(I18NUtf8Buffer& out, const char* prefix, char16_t character, int digits) {
  out.appendChecked(prefix);
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
    out.appendChecked(std::string_view("0123456789abcdef").substr(character >> shift & 0xF, 1));
  }
}

template <bool isJson>
[[gnu::noinline]] void appendEscape(I18NUtf8Buffer& out, char16_t character) {
  constexpr std::string_view FROM = isJson ? "\"\\\t\n\r\b\f" : "\\\t\n\r\"", TO = isJson ? "\"\\tnrbf" : "\\tnr\"";
  const std::size_t at = character < 0x80 ? FROM.find(static_cast<char>(character)) : FROM.npos;
  if (at != FROM.npos) {
    out.appendChecked("\\");
    out.appendChecked(TO.substr(at, 1));
  } else if (isJson || character >= 0x80) {
    appendHex(out, "\\u", character, 4);
  } else {
    appendHex(out, "\\x", character, 2);
  }
}

template <bool isJson>
void appendEscaped(I18NUtf8Buffer& out, std::string_view utf8) {
  for (std::size_t at = 0;;) {
    const Found found = findEscaped<isJson>(utf8, at);
    out.appendChecked(utf8.substr(at, found.at - at));
    if (found.length == 0) return;
    appendEscape<isJson>(out, found.character);
    at = found.at + found.length;
  }
}

template <bool isJson>
void makeEscaped(I18NUtf8Buffer& out, std::size_t start) {
  const std::string_view text = out.view().substr(start);
  if (findEscaped<isJson>(text, 0).length == 0) return;
  const std::string copy(text);
  out.cutTo(start);
  appendEscaped<isJson>(out, copy);
}

}  // namespace

void LOGEscape::appendJson(I18NUtf8Buffer& out, std::string_view utf8) { appendEscaped<true>(out, utf8); }

void LOGEscape::appendSafe(I18NUtf8Buffer& out, std::string_view utf8) { appendEscaped<false>(out, utf8); }

void LOGEscape::makeJson(I18NUtf8Buffer& out, std::size_t start) { makeEscaped<true>(out, start); }

void LOGEscape::makeSafe(I18NUtf8Buffer& out, std::size_t start) { makeEscaped<false>(out, start); }

// A quote inside quotes is escaped like a backslash, by which everything else stays as appendSafe() has it.
void LOGEscape::appendWord(I18NUtf8Buffer& out, std::string_view utf8) {
  if (!utf8.empty() && utf8.find_first_of(" \"=") == utf8.npos) return appendSafe(out, utf8);
  out.appendChecked("\"");
  for (;;) {
    const std::size_t quote = std::min(utf8.find('"'), utf8.size());
    appendSafe(out, utf8.substr(0, quote));
    if (quote == utf8.size()) break;
    appendEscape<false>(out, u'"');
    utf8.remove_prefix(quote + 1);
  }
  out.appendChecked("\"");
}
