#include "log4vrk/platform/I18NString.h"

#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/I18NAscii.h"
#include "log4vrk/platform/internal/VRKThreadExit.h"

namespace {

constexpr char16_t REPLACEMENT = 0xFFFD;

// ICU counts in 32 bits, and a UTF-16 unit gives up to three bytes.
constexpr std::size_t MOST_UNITS = 0x28000000;

void checkLength(std::size_t length) {
  if (VRKFault::hit(VRKFault::TEXT_CONVERSION) || length > MOST_UNITS) {
    throw I18NRuntimeError("text too long to convert", VRK_HERE);
  }
}

// No UTF-8 gives more units than it has bytes, so that one pass is enough. Below it is three bytes for a unit.
void appendByIcu(std::u16string& out, std::string_view utf8) {
  checkLength(utf8.size());
  const std::size_t start = out.size();
  out.resize(start + utf8.size());
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8WithSub(&out[start], static_cast<std::int32_t>(utf8.size()), &length, utf8.data(),
                       static_cast<std::int32_t>(utf8.size()), REPLACEMENT, nullptr, &status);
  if (U_FAILURE(status)) throw I18NRuntimeError(u_errorName(status), VRK_HERE);
  out.resize(start + static_cast<std::size_t>(length));
}

// Nearly all narrow text is ASCII, so that is tried first and ICU gets the rest. Pieces are widened on the stack, since
// room that is made in the text itself would be filled with zeros first.
void appendWidened(std::u16string& out, std::string_view utf8) {
  char16_t piece[128];
  while (!utf8.empty()) {
    const std::size_t count = std::min(utf8.size(), std::size(piece));
    if (!i18nWidenAscii(utf8.data(), count, piece)) return appendByIcu(out, utf8);
    out.append(piece, count);
    utf8.remove_prefix(count);
  }
}

void appendByIcu(std::string& out, std::u16string_view units) {
  const std::size_t start = out.size();
  out.resize(start + 3 * units.size());
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8WithSub(&out[start], static_cast<std::int32_t>(3 * units.size()), &length, units.data(),
                     static_cast<std::int32_t>(units.size()), REPLACEMENT, nullptr, &status);
  if (U_FAILURE(status)) throw I18NRuntimeError(u_errorName(status), VRK_HERE);
  out.resize(start + static_cast<std::size_t>(length));
}

void appendNarrowed(std::string& out, std::u16string_view units) {
  checkLength(units.size());
  const std::size_t start = out.size();
  out.resize(start + units.size());
  if (i18nNarrowAscii(units.data(), units.size(), &out[start])) return;
  out.resize(start);
  appendByIcu(out, units);
}

std::string_view viewOf(const char* bytes) { return bytes == nullptr ? std::string_view() : std::string_view(bytes); }

template <typename Integer>
void appendDecimal(std::u16string& out, Integer value) {
  char digits[24];
  char16_t units[sizeof digits];
  const auto count = static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits);
  i18nWidenAscii(digits, count, units);
  out.append(units, count);
}

// The bytes that c_str() lends. They are freed by VRKThreadExit and not by a destructor of the thread's, because other
// such destructors may still log, and would find them gone.
std::string& lentBytes() {
  static thread_local std::string* bytes = nullptr;
  if (bytes == nullptr) {
    static VRKThreadExit& exit = vrkImmortal<VRKThreadExit>([](void* lent) {
      bytes = nullptr;
      delete static_cast<std::string*>(lent);
    });
    bytes = new std::string;
    exit.set(bytes);
  }
  return *bytes;
}

}  // namespace

I18NString::I18NString(const char* utf8) : I18NString(viewOf(utf8)) {}

I18NString::I18NString(const char16_t* utf16) : m_text(utf16 == nullptr ? u"" : utf16) {}

I18NString::I18NString(std::string_view utf8) { appendWidened(m_text, utf8); }

I18NString::I18NString(const wchar_t* wide) : I18NString(wide == nullptr ? L"" : std::wstring_view(wide)) {}

// A unit is a character: what is none, such as half of a surrogate pair, becomes U+FFFD.
I18NString::I18NString(std::wstring_view wide) {
  static_assert(sizeof(wchar_t) == sizeof(char32_t));
  m_text.reserve(wide.size());
  for (const wchar_t unit : wide) {
    const auto character = static_cast<UChar32>(static_cast<char32_t>(unit));
    const UChar32 valid = U_IS_UNICODE_CHAR(character) || U_IS_UNICODE_NONCHAR(character) ? character : REPLACEMENT;
    if (U_IS_BMP(valid)) {
      m_text += static_cast<char16_t>(valid);
    } else {
      m_text += {U16_LEAD(valid), U16_TRAIL(valid)};
    }
  }
}

I18NString::I18NString(const char* bytes, const char* encoding) {
  const std::string_view in = viewOf(bytes);
  checkLength(in.size());
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open(encoding, &status), &ucnv_close);
  if (U_FAILURE(status)) throw I18NRuntimeError(I18NString("unknown encoding ") + encoding, VRK_HERE);
  m_text.resize(2 * in.size());  // no encoding gives more than two units for a byte
  const std::int32_t length = ucnv_toUChars(converter.get(), m_text.data(), static_cast<std::int32_t>(m_text.size()),
                                            in.data(), static_cast<std::int32_t>(in.size()), &status);
  if (U_FAILURE(status)) throw I18NRuntimeError(u_errorName(status), VRK_HERE);
  m_text.resize(static_cast<std::size_t>(length));
}

std::string I18NString::toUtf8() const {
  std::string out;
  appendNarrowed(out, m_text);
  return out;
}

void I18NString::appendUtf8To(std::string& out) const { appendNarrowed(out, m_text); }

const char* I18NString::c_str(long* length) const {
  std::string& bytes = lentBytes();
  bytes.clear();
  appendNarrowed(bytes, m_text);
  if (length != nullptr) *length = static_cast<long>(bytes.size() + 1);
  return bytes.c_str();
}

I18NBytes I18NString::toBytes(long* length) const {
  const std::string utf8 = toUtf8();
  I18NBytes bytes(new char[utf8.size() + 1]);
  std::memcpy(bytes.get(), utf8.c_str(), utf8.size() + 1);
  if (length != nullptr) *length = static_cast<long>(utf8.size());
  return bytes;
}

I18NString I18NString::substring(std::size_t begin, std::size_t count) const {
  return begin >= m_text.size() ? I18NString() : I18NString(m_text.substr(begin, count));
}

bool I18NString::startsWith(const I18NString& prefix) const noexcept {
  return m_text.compare(0, prefix.m_text.size(), prefix.m_text) == 0;
}

void I18NString::insert(std::size_t position, std::size_t count, char16_t unit) {
  m_text.insert(std::min(position, m_text.size()), count, unit);
}

void I18NString::erase(std::size_t position, std::size_t count) {
  m_text.erase(std::min(position, m_text.size()), count);
}

I18NString& I18NString::append(std::string_view utf8) {
  appendWidened(m_text, utf8);
  return *this;
}

I18NString& I18NString::operator+=(long long value) {
  appendDecimal(m_text, value);
  return *this;
}

I18NString& I18NString::operator+=(unsigned long long value) {
  appendDecimal(m_text, value);
  return *this;
}
