// Text in UTF-8 that is put together piece by piece.

#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// What a log line is built in: appending is a copy into memory that is there already, since clearing keeps it. What it holds is
/// well-formed.
///
/// Thread safety: as std::string.
class LOG4VRK_EXPORT I18NUtf8Buffer {
 public:
  I18NUtf8Buffer() noexcept = default;
  I18NUtf8Buffer(I18NUtf8Buffer&& other) noexcept { swap(other); }
  I18NUtf8Buffer& operator=(I18NUtf8Buffer&& other) noexcept {
    swap(other);
    return *this;
  }

  std::string_view view() const noexcept { return {m_bytes.get(), m_size}; }
  std::size_t size() const noexcept { return m_size; }
  std::size_t capacity() const noexcept { return m_capacity; }
  /// Keeps the memory.
  void clear() noexcept { m_size = 0; }
  /// Gives back more memory than `most` bytes, and with it the text.
  void limitMemory(std::size_t most) noexcept {
    if (m_capacity > most) I18NUtf8Buffer().swap(*this);
  }

  /// What cannot be decoded becomes U+FFFD.
  void append(std::string_view utf8) {
    if (!appendIfAscii(utf8)) appendDecoded(utf8);
  }
  /// False when there is anything but ASCII; then nothing is appended.
  bool appendIfAscii(std::string_view text);
  void append(std::u16string_view utf16);
  void append(const I18NString& text) { append(text.view()); }
  // Decimal, without leading zeros.
  void append(long long value);
  void append(unsigned long long value);
  /// A piece that is known to be well-formed.
  void appendChecked(std::string_view utf8) {
    char* const to = room(utf8.size());
    if (utf8.size() >= 8 && utf8.size() <= 32) {
      copyShort(to, utf8.data(), utf8.size());
    } else if (!utf8.empty()) {
      std::memcpy(to, utf8.data(), utf8.size());
    }
    m_size += utf8.size();
  }
  /// The first `size` of these bytes, which costs less than a size that can be anything.
  void appendChecked(const char (&bytes)[8], std::size_t size) {
    std::memcpy(room(sizeof bytes), bytes, sizeof bytes);
    m_size += size;
  }

  // These leave it to the caller that characters stay whole.
  /// Puts `count` blanks in front of the byte at `position`.
  void insertBlanks(std::size_t position, std::size_t count);
  /// Takes out `count` bytes from `position`.
  void erase(std::size_t position, std::size_t count);

 private:
  /// 8 to 32 bytes: as two or four blocks that may overlap, without a call.
  static void copyShort(char* to, const char* from, std::size_t count) {
    char first[16], last[16];
    if (count < 16) {
      std::memcpy(first, from, 8);
      std::memcpy(last, from + count - 8, 8);
      std::memcpy(to, first, 8);
      std::memcpy(to + count - 8, last, 8);
    } else {
      std::memcpy(first, from, 16);
      std::memcpy(last, from + count - 16, 16);
      std::memcpy(to, first, 16);
      std::memcpy(to + count - 16, last, 16);
    }
  }
  void swap(I18NUtf8Buffer& other) noexcept {
    std::swap(m_bytes, other.m_bytes);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
  }
  /// Where the next `count` bytes go.
  char* room(std::size_t count) {
    if (m_capacity - m_size < count) grow(count);
    return m_bytes.get() + m_size;
  }
  void grow(std::size_t count);
  void appendDecoded(std::string_view utf8);

  std::unique_ptr<char[]> m_bytes;
  std::size_t m_size = 0;
  std::size_t m_capacity = 0;
};
