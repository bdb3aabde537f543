#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <string>

#include "log4vrk/platform/internal/I18NAscii.h"

namespace {

constexpr std::size_t FIRST_CAPACITY = 64;

constexpr char DIGIT_PAIRS[] =
    "000102030405060708091011121314151617181920212223242526272829303132333435363738394041424344454647484950515253545556"
    "57585960"
    "6162636465666768697071727374757677787980818283848586878889909192939495969798"
    "99";

bool isWellFormed(std::string_view utf8) {
  if (i18nIsAscii(utf8.data(), utf8.size())) return true;
  for (std::size_t i = 0; i < utf8.size();) {
    UChar32 character = 0;
    U8_NEXT(utf8.data(), i, utf8.size(), character);
    if (character < 0) return false;
  }
  return true;
}

}  // namespace

void I18NUtf8Buffer::grow(std::size_t count) {
  const std::size_t capacity = (std::max({FIRST_CAPACITY, 2 * m_capacity, m_size + count}) + 1) / 2 * 2;
  char* const bytes = new char[capacity];
  if (m_size > 0) std::memcpy(bytes, m_bytes, m_size);
  if (ownsBytes()) delete[] m_bytes;
  m_bytes = bytes;
  m_capacity = capacity;
}

bool I18NUtf8Buffer::appendIfAscii(std::string_view text) {
  if (!i18nCopyAscii(text.data(), text.size(), room(text.size()))) return false;
  m_size += text.size();
  return true;
}

// Text that is well-formed already is only copied.
void I18NUtf8Buffer::appendDecoded(std::string_view utf8) {
  appendChecked(isWellFormed(utf8) ? utf8 : std::string_view(I18NString(utf8).toUtf8()));
}

void I18NUtf8Buffer::repair() noexcept {
  if (isWellFormed(view())) return;
  try {
    const std::string repaired = I18NString(view()).toUtf8();
    room(repaired.size());
    clear();
    appendChecked(repaired);
  } catch (const std::exception&) {
    std::replace_if(
        m_bytes, m_bytes + m_size, [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; }, '?');
  }
}

void I18NUtf8Buffer::append(std::u16string_view utf16) {
  if (i18nNarrowAscii(utf16.data(), utf16.size(), room(utf16.size()))) {
    m_size += utf16.size();
  } else {
    appendChecked(I18NString(utf16).toUtf8());
  }
}

void I18NUtf8Buffer::appendChecked(std::string_view utf8) { extendTo(copy(room(utf8.size()), utf8)); }

namespace {

// Two digits at a time from the end, in half of the time that std::to_chars takes.
char* putDigitsBefore(char* end, unsigned long long value) {
  for (; value >= 100; value /= 100) std::memcpy(end -= 2, &DIGIT_PAIRS[2 * (value % 100)], 2);
  if (value >= 10) {
    std::memcpy(end -= 2, &DIGIT_PAIRS[2 * value], 2);
  } else {
    *--end = static_cast<char>('0' + value);
  }
  return end;
}

#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr std::uint32_t MOST_AT_ONCE = 99999999;

std::uint64_t pairAt(std::uint32_t value) {
  std::uint16_t pair;
  std::memcpy(&pair, &DIGIT_PAIRS[2 * value], sizeof pair);
  return pair;
}

// The bytes of eight digits, filled up with zeros in front: all at once, so that no step waits for the one before.
std::uint64_t eightDigits(std::uint32_t value) {
  const std::uint32_t high = value / 10000, low = value % 10000;
  return pairAt(high / 100) | pairAt(high % 100) << 16 | pairAt(low / 100) << 32 | pairAt(low % 100) << 48;
}

std::size_t digitsOf(std::uint32_t value) {
  static constexpr std::uint32_t POWERS[] = {0, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
  const auto bits = static_cast<std::size_t>(32 - __builtin_clz(value | 1));
  const std::size_t least = bits * 1233 / 4096;  // which is a little more than the logarithm of two
  return least + (value >= POWERS[least] ? 1 : 0);
}
#endif

}  // namespace

char* I18NUtf8Buffer::putDecimal(char* at, unsigned long long value) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  if (value <= MOST_AT_ONCE) {
    const auto narrow = static_cast<std::uint32_t>(value);
    const std::size_t count = digitsOf(narrow);
    const std::uint64_t bytes = eightDigits(narrow) >> 8 * (8 - count);
    std::memcpy(at, &bytes, sizeof bytes);
    return at + count;
  }
#endif
  char digits[MOST_DIGITS];
  char* const end = digits + sizeof digits;
  const char* const first = putDigitsBefore(end, value);
  return copy(at, {first, static_cast<std::size_t>(end - first)});
}

char* I18NUtf8Buffer::putDecimal(char* at, long long value) {
  if (value >= 0) return putDecimal(at, static_cast<unsigned long long>(value));
  *at = '-';
  return putDecimal(at + 1, -static_cast<unsigned long long>(value));
}

void I18NUtf8Buffer::insertBlanks(std::size_t position, std::size_t count) {
  room(count);
  if (position == m_size && count < 8) {
    while (count-- > 0) m_bytes[m_size++] = ' ';
    return;
  }
  char* const hole = m_bytes + position;
  std::memmove(hole + count, hole, m_size - position);
  std::memset(hole, ' ', count);
  m_size += count;
}

void I18NUtf8Buffer::erase(std::size_t position, std::size_t count) {
  char* const hole = m_bytes + position;
  std::memmove(hole, hole + count, m_size - position - count);
  m_size -= count;
}
