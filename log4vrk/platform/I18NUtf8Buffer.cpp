#include "log4vrk/platform/I18NUtf8Buffer.h"

#include <algorithm>
#include <string>

#include "log4vrk/platform/I18NAscii.h"

namespace {

constexpr std::size_t FIRST_CAPACITY = 64;
constexpr std::size_t MOST_DIGITS = 24;

constexpr char DIGIT_PAIRS[] =
    "000102030405060708091011121314151617181920212223242526272829303132333435363738394041424344454647484950515253545556"
    "57585960"
    "6162636465666768697071727374757677787980818283848586878889909192939495969798"
    "99";

}  // namespace

void I18NUtf8Buffer::grow(std::size_t count) {
  const std::size_t capacity = std::max({FIRST_CAPACITY, 2 * m_capacity, m_size + count});
  std::unique_ptr<char[]> bytes(new char[capacity]);
  if (m_size > 0) std::memcpy(bytes.get(), m_bytes.get(), m_size);
  m_bytes = std::move(bytes);
  m_capacity = capacity;
}

bool I18NUtf8Buffer::appendIfAscii(std::string_view text) {
  if (!i18nCopyAscii(text.data(), text.size(), room(text.size()))) return false;
  m_size += text.size();
  return true;
}

void I18NUtf8Buffer::appendDecoded(std::string_view utf8) { appendChecked(I18NString(utf8).toUtf8()); }

void I18NUtf8Buffer::append(std::u16string_view utf16) {
  if (!i18nNarrowAscii(utf16.data(), utf16.size(), room(utf16.size()))) {
    return appendChecked(I18NString(utf16).toUtf8());
  }
  m_size += utf16.size();
}

void I18NUtf8Buffer::append(long long value) {
  if (value < 0) {
    appendChecked("-");
    append(-static_cast<unsigned long long>(value));
  } else {
    append(static_cast<unsigned long long>(value));
  }
}

// Two digits at a time from the end, in half of the time that std::to_chars takes.
void I18NUtf8Buffer::append(unsigned long long value) {
  char digits[MOST_DIGITS];
  char* first = digits + sizeof digits;
  for (; value >= 100; value /= 100) std::memcpy(first -= 2, &DIGIT_PAIRS[2 * (value % 100)], 2);
  if (value >= 10) {
    std::memcpy(first -= 2, &DIGIT_PAIRS[2 * value], 2);
  } else {
    *--first = static_cast<char>('0' + value);
  }
  appendChecked({first, static_cast<std::size_t>(digits + sizeof digits - first)});
}

void I18NUtf8Buffer::insertBlanks(std::size_t position, std::size_t count) {
  room(count);
  if (position == m_size && count < 8) {
    while (count-- > 0) m_bytes[m_size++] = ' ';
    return;
  }
  char* const hole = m_bytes.get() + position;
  std::memmove(hole + count, hole, m_size - position);
  std::memset(hole, ' ', count);
  m_size += count;
}

void I18NUtf8Buffer::erase(std::size_t position, std::size_t count) {
  char* const hole = m_bytes.get() + position;
  std::memmove(hole, hole + count, m_size - position - count);
  m_size -= count;
}
