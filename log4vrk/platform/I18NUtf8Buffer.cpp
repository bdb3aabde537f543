#include "log4vrk/platform/I18NUtf8Buffer.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "log4vrk/platform/I18NAscii.h"

namespace {

constexpr std::size_t FIRST_CAPACITY = 64;
constexpr std::size_t MOST_DIGITS = 24;

}  // namespace

void I18NUtf8Buffer::grow(std::size_t count) {
  const std::size_t capacity = std::max({FIRST_CAPACITY, 2 * m_capacity, m_size + count});
  std::unique_ptr<char[]> bytes(new char[capacity]);
  if (m_size > 0) std::memcpy(bytes.get(), m_bytes.get(), m_size);
  m_bytes = std::move(bytes);
  m_capacity = capacity;
}

void I18NUtf8Buffer::append(std::string_view utf8) {
  if (!i18nCopyAscii(utf8.data(), utf8.size(), room(utf8.size()))) return appendDecoded(utf8);
  m_size += utf8.size();
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

void I18NUtf8Buffer::append(unsigned long long value) {
  char* const first = room(MOST_DIGITS);
  m_size = static_cast<std::size_t>(std::to_chars(first, first + MOST_DIGITS, value).ptr - m_bytes.get());
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
