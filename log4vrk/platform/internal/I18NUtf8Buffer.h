// Text in UTF-8 that is put together piece by piece.

#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/I18NShortAscii.h"

/// What a log line is built in: appending is a copy into memory that is there already, since clearing keeps it. What it
/// holds is well-formed.
///
/// Thread safety: as std::string.
class LOG4VRK_EXPORT I18NUtf8Buffer {
 public:
  I18NUtf8Buffer() noexcept = default;
  /// Begins in memory that is lent for its life. Such a one is not moved.
  I18NUtf8Buffer(char* memory, std::size_t size) noexcept : m_bytes(memory), m_capacity((size - 1) | 1) {}
  I18NUtf8Buffer(I18NUtf8Buffer&& other) noexcept { swap(other); }
  I18NUtf8Buffer& operator=(I18NUtf8Buffer&& other) noexcept {
    swap(other);
    return *this;
  }

  ~I18NUtf8Buffer() {
    if (ownsBytes()) delete[] m_bytes;
  }

  std::string_view view() const noexcept { return {m_bytes, m_size}; }
  std::size_t size() const noexcept { return m_size; }
  std::size_t capacity() const noexcept { return m_capacity; }
  bool hasRoom(std::size_t count) const noexcept { return m_capacity - m_size >= count; }
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
  void append(long long value) { extendTo(putDecimal(room(MOST_DIGITS), value)); }
  void append(unsigned long long value) { extendTo(putDecimal(room(MOST_DIGITS), value)); }
  /// Room for any number. All of it may be written to, also for a short one.
  static constexpr std::size_t MOST_DIGITS = 40;
  /// Returns the end.
  static char* putDecimal(char* at, long long value);
  static char* putDecimal(char* at, unsigned long long value);
  /// A piece that is known to be well-formed.
  void appendChecked(std::string_view utf8);
  // For pieces that are written one behind the other.
  /// Where the next `count` bytes go.
  [[gnu::always_inline]] char* room(std::size_t count) {
    if (!hasRoom(count)) grow(count);
    return m_bytes + m_size;
  }
  /// Takes in what has been written from room() to `end`, well-formed.
  void extendTo(const char* end) { m_size = static_cast<std::size_t>(end - m_bytes); }
  /// As blocks that may overlap, without a call for up to 64 bytes. Returns the end.
  [[gnu::always_inline]] static char* copy(char* to, std::string_view bytes) {
    const std::size_t count = bytes.size();
    if (count > 64) {
      std::memcpy(to, bytes.data(), count);
    } else if (count >= 16) {
      copyBlocks<16>(to, bytes.data(), count);
    } else if (count >= 4) {
      copyBlocks<4>(to, bytes.data(), count);
    } else {
      for (std::size_t i = 0; i < count; ++i) to[i] = bytes[i];
    }
    return to + count;
  }

  /// Makes it well-formed where pieces were appended that are not: what cannot be decoded becomes U+FFFD, or, when
  /// there is no memory for that, everything but ASCII a question mark.
  void repair() noexcept;

  // These leave it to the caller that characters stay whole.
  /// Keeps the first `size` bytes.
  void cutTo(std::size_t size) { m_size = size; }
  /// Puts `count` blanks in front of the byte at `position`.
  void insertBlanks(std::size_t position, std::size_t count);
  /// Takes out `count` bytes from `position`.
  void erase(std::size_t position, std::size_t count);

 private:
  /// `size` to four times that.
  template <std::size_t size>
  static void copyBlocks(char* to, const char* from, std::size_t count) {
    char first[size], second[size], beforeLast[size], last[size];
    const std::size_t middle = count > 2 * size ? size : 0;
    std::memcpy(first, from, size);
    std::memcpy(second, from + middle, size);
    std::memcpy(beforeLast, from + count - size - middle, size);
    std::memcpy(last, from + count - size, size);
    std::memcpy(to, first, size);
    std::memcpy(to + middle, second, size);
    std::memcpy(to + count - size - middle, beforeLast, size);
    std::memcpy(to + count - size, last, size);
  }
  void swap(I18NUtf8Buffer& other) noexcept {
    std::swap(m_bytes, other.m_bytes);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
  }
  bool ownsBytes() const noexcept { return m_capacity % 2 == 0; }
  void grow(std::size_t count);
  void appendDecoded(std::string_view utf8);

  char* m_bytes = nullptr;
  std::size_t m_size = 0;
  std::size_t m_capacity = 0;  // odd when m_bytes are lent, even when they are its own
};
