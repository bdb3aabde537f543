// What programs have as texts, as views that know their encoding.

#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

// A null pointer is the empty text.
inline std::string_view logTextOf(const char* utf8) { return utf8 != nullptr ? std::string_view(utf8) : ""; }
inline std::string_view logTextOf(std::string_view utf8) { return utf8; }
inline std::u16string_view logTextOf(const char16_t* utf16) {
  return utf16 != nullptr ? std::u16string_view(utf16) : u"";
}
inline std::u16string_view logTextOf(std::u16string_view utf16) { return utf16; }
inline std::wstring_view logTextOf(const wchar_t* wide) { return wide != nullptr ? std::wstring_view(wide) : L""; }
inline std::wstring_view logTextOf(std::wstring_view wide) { return wide; }
#ifdef __cpp_char8_t
inline std::string_view logTextOf(const char8_t* utf8) { return logTextOf(reinterpret_cast<const char*>(utf8)); }
inline std::string_view logTextOf(std::u8string_view utf8) {
  return {reinterpret_cast<const char*>(utf8.data()), utf8.size()};
}
#endif

template <typename T, typename = void>
inline constexpr bool logIsText = false;
/// Whether a log call takes a T as its text, beside I18NString. A literal 0 or nullptr is none.
template <typename T>
inline constexpr bool logIsText<T, std::void_t<decltype(logTextOf(std::declval<const T&>()))>> =
    !std::is_null_pointer_v<T>;
template <typename T>
using LOGIfText = std::enable_if_t<logIsText<T>>;
