// The text type of the library: UTF-16 inside, UTF-8 at the platform's boundary.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "log4vrk/platform/VRKExport.h"

/// Bytes that belong to whoever has this. It is as std::unique_ptr<char[]>, and converts into one. <memory> is not
/// included for it, because that would cost every file that logs as much again as this whole header.
class I18NBytes {
 public:
  explicit I18NBytes(char* bytes) noexcept : m_bytes(bytes) {}
  I18NBytes(I18NBytes&& other) noexcept : m_bytes(other.release()) {}
  I18NBytes& operator=(I18NBytes&& other) noexcept {
    std::swap(m_bytes, other.m_bytes);
    return *this;
  }
  ~I18NBytes() { delete[] m_bytes; }

  char* get() const noexcept { return m_bytes; }
  char& operator[](std::size_t index) const { return m_bytes[index]; }
  /// Whoever calls it deletes them, with delete[].
  char* release() noexcept { return std::exchange(m_bytes, nullptr); }

  template <typename Pointer, typename = typename Pointer::deleter_type,
            typename = decltype(std::declval<const Pointer&>()[0])>
  operator Pointer() && noexcept {
    return Pointer(release());
  }

 private:
  char* m_bytes;
};

/// A text in UTF-16. Narrow text is UTF-8 unless an encoding is named. Ill-formed input never fails: what cannot be
/// decoded becomes U+FFFD, so that a log call is not lost over one bad byte.
///
/// Thread safety: as std::string; const operations may run at once.
class LOG4VRK_EXPORT I18NString {
 public:
  static constexpr std::size_t npos = std::u16string::npos;

  I18NString() noexcept = default;
  /// A null pointer is the empty text.
  I18NString(const char* utf8);
  I18NString(const char16_t* utf16);
  I18NString(const wchar_t* wide);
  I18NString(std::string_view utf8);
  I18NString(const std::string& utf8) : I18NString(std::string_view(utf8)) {}
  I18NString(std::u16string_view utf16) : m_text(utf16) {}
  I18NString(const std::u16string& utf16) : m_text(utf16) {}
  I18NString(std::u16string&& utf16) noexcept : m_text(std::move(utf16)) {}
  I18NString(std::wstring_view wide);
  I18NString(const std::wstring& wide) : I18NString(std::wstring_view(wide)) {}
  /// `encoding` is any name that ICU knows ("ascii", "iso-8859-1"); an unknown one raises I18NRuntimeError.
  I18NString(const char* bytes, const char* encoding);

  std::size_t length() const noexcept { return m_text.size(); }
  bool isEmpty() const noexcept { return m_text.empty(); }
  /// Keeps the capacity.
  void clear() noexcept { m_text.clear(); }
  char16_t operator[](std::size_t index) const { return m_text[index]; }

  std::u16string_view view() const noexcept { return m_text; }
  std::string toUtf8() const;
  void appendUtf8To(std::string& out) const;

  /// The text in UTF-8, valid until this thread's next call. `*length` counts the terminating zero byte.
  const char* c_str(long* length = nullptr) const;
  /// A copy of the text in UTF-8 that ends in a zero byte, which `*length` does not count.
  I18NBytes toBytes(long* length = nullptr) const;

  /// `count` units from `begin`; a `begin` past the end gives the empty text.
  I18NString substring(std::size_t begin, std::size_t count = npos) const;
  bool startsWith(const I18NString& prefix) const noexcept;
  /// Where the last occurrence that begins at or before `from` begins, or npos.
  std::size_t findLast(const I18NString& text, std::size_t from = npos) const noexcept {
    return m_text.rfind(text.m_text, from);
  }

  /// Puts `count` times `unit` in front of the unit at `position`. A position past the end is the end, here and below.
  void insert(std::size_t position, std::size_t count, char16_t unit);
  /// Takes out up to `count` units from `position`.
  void erase(std::size_t position, std::size_t count);

  I18NString& append(std::string_view utf8);
  I18NString& append(std::u16string_view utf16) {
    m_text.append(utf16);
    return *this;
  }
  I18NString& operator+=(const I18NString& text) { return append(text.view()); }
  I18NString& operator+=(const char* utf8) { return append(utf8 == nullptr ? std::string_view() : utf8); }
  I18NString& operator+=(char ascii) { return *this += static_cast<char16_t>(static_cast<unsigned char>(ascii)); }
  I18NString& operator+=(char16_t unit) {
    m_text += unit;
    return *this;
  }
  // Decimal, without leading zeros.
  I18NString& operator+=(int value) { return *this += static_cast<long long>(value); }
  I18NString& operator+=(unsigned value) { return *this += static_cast<unsigned long long>(value); }
  I18NString& operator+=(long value) { return *this += static_cast<long long>(value); }
  I18NString& operator+=(unsigned long value) { return *this += static_cast<unsigned long long>(value); }
  I18NString& operator+=(long long value);
  I18NString& operator+=(unsigned long long value);

  friend bool operator==(const I18NString& a, const I18NString& b) noexcept { return a.m_text == b.m_text; }
  friend bool operator!=(const I18NString& a, const I18NString& b) noexcept { return a.m_text != b.m_text; }
  friend bool operator<(const I18NString& a, const I18NString& b) noexcept { return a.m_text < b.m_text; }

  template <typename T>
  friend I18NString operator+(I18NString a, const T& b) {
    a += b;
    return a;
  }
  friend I18NString operator+(const char* a, const I18NString& b) {
    I18NString sum(a);
    sum += b;
    return sum;
  }

 private:
  std::u16string m_text;
};

/// @cond
// Has texts as keys of the unordered containers.
template <>
struct std::hash<I18NString> {
  std::size_t operator()(const I18NString& text) const noexcept {
    return std::hash<std::u16string_view>()(text.view());
  }
};
/// @endcond
