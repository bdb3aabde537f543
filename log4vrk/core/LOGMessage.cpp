#include "log4vrk/core/LOGMessage.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <locale>
#include <ostream>
#include <streambuf>

#include "log4vrk/platform/VRKThrowable.h"

namespace {

// Tells a precision that was set from none. Streams take a negative one for their usual six digits.
constexpr std::streamsize NO_PRECISION = -1;
constexpr std::streamsize USUAL_PRECISION = 6;

// Runs what adds a part. Nothing leaves it: `failed` gets the description of what has been raised.
template <typename Operation, typename Failed>
void contained(Operation operation, Failed failed) {
  try {
    operation();
  } catch (const VRKThrowable& error) {
    failed(error.what());
  } catch (const std::exception& error) {
    failed(error.what());
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    failed("unknown exception");
  }
}

// As few digits as read back the same, without an exponent where people would write none.
template <typename Number>
char* putNumber(char* at, Number value) {
  const Number size = std::fabs(value);
  const bool isHandy = value == 0 || (size >= Number(1e-5L) && size < Number(1e16L));
  const auto format = isHandy ? std::chars_format::fixed : std::chars_format::scientific;
  return std::to_chars(at, at + I18NUtf8Buffer::MOST_DIGITS, value, format).ptr;
}
template <typename Number>
std::string_view shortest(Number value, char* room) {
  return {room, static_cast<std::size_t>(putNumber(room, value) - room)};
}

void makeUppercase(std::string& ascii) {
  for (char& letter : ascii) {
    if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
  }
}

}  // namespace

// A stream of the program's kind that writes into the message. Its numbers are those of the C locale.
struct LOGMessage::Stream : std::streambuf {
  explicit Stream(LOGMessage& into) : message(into), out(this) {
    out.imbue(std::locale::classic());
    out.setf(std::ios_base::boolalpha);
    out.precision(NO_PRECISION);
  }

  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    message.m_text.appendChecked({bytes, static_cast<std::size_t>(count)});
    return count;
  }
  int_type overflow(int_type byte) override {
    const char single = traits_type::to_char_type(byte);
    if (!traits_type::eq_int_type(byte, traits_type::eof())) message.m_text.appendChecked({&single, 1});
    return traits_type::not_eof(byte);
  }

  bool isPlain() const { return out.width() == 0; }
  bool hasBase() const { return (out.flags() & std::ios_base::basefield) != std::ios_base::dec; }
  bool hasForm() const {
    return out.precision() != NO_PRECISION || (out.flags() & (std::ios_base::floatfield | std::ios_base::showpoint));
  }

  LOGMessage& message;
  std::ostream out;
};

void LOGMessage::endStream() { delete m_stream; }

template <typename Operation>
void LOGMessage::guard(Operation operation) {
  contained(operation, [this](const char* what) { addFailure(what); });
}

// What has been raised may be the lack of memory, so this needs none.
void LOGMessage::addFailure(const char* what) {
  for (const std::string_view part :
       {std::string_view("<not printed: "), std::string_view(what), std::string_view(">")}) {
    if (m_text.hasRoom(part.size())) m_text.appendChecked(part);
  }
}

// Bytes are added as they are, because those of a character may come one by one, and looked at when all are there.
std::string_view LOGMessage::utf8() const {
  m_text.repair();
  return m_text.view();
}

template <typename Operation>
void LOGMessage::addFormatted(Operation operation) {
  guard([&] {
    if (m_stream == nullptr) m_stream = new Stream(*this);
    operation(*m_stream);
    m_stream->out.clear();  // a part that failed is no reason to drop those behind it
  });
}

LOGMessage& LOGMessage::operator<<(std::ostream& (*manipulator)(std::ostream&)) {
  addFormatted([&](Stream& stream) { manipulator(stream.out); });
  return *this;
}
LOGMessage& LOGMessage::operator<<(std::ios_base& (*manipulator)(std::ios_base&)) {
  addFormatted([&](Stream& stream) { manipulator(stream.out); });
  return *this;
}
LOGMessage& LOGMessage::operator<<(std::basic_ios<char>& (*manipulator)(std::basic_ios<char>&)) {
  addFormatted([&](Stream& stream) { manipulator(stream.out); });
  return *this;
}

void LOGMessage::addStreamed(void (*print)(std::ostream&, const void*), const void* part) {
  addFormatted([&](Stream& stream) { print(stream.out, part); });
}

void LOGMessage::addText(std::string_view utf8) {
  if (m_stream != nullptr && !m_stream->isPlain()) return addFormatted([&](Stream& stream) { stream.out << utf8; });
  guard([&] { m_text.appendChecked(utf8); });
}

void LOGMessage::addText(std::u16string_view utf16) {
  if (m_stream != nullptr && !m_stream->isPlain()) return guard([&] { addText(I18NString(utf16).toUtf8()); });
  guard([&] { m_text.append(utf16); });
}

void LOGMessage::addText(std::wstring_view wide) {
  guard([&] { addText(I18NString(wide).view()); });
}

void LOGMessage::addObject(const LOGObject& object) {
  guard([&] { addText(object.toString().view()); });
}

void LOGMessage::addBool(bool value) {
  if (m_stream != nullptr) return addFormatted([&](Stream& stream) { stream.out << value; });
  addText(std::string_view(value ? "true" : "false"));
}

// A byte may be a part of a character. So it is added as it is.
void LOGMessage::addCharacter(char32_t character, std::size_t size) {
  if (size == 1) {
    const char byte = static_cast<char>(character);
    if (m_stream != nullptr && !m_stream->isPlain()) return addFormatted([&](Stream& stream) { stream.out << byte; });
    return addText(std::string_view(&byte, 1));
  }
  const wchar_t wide = static_cast<wchar_t>(character);
  addText(std::wstring_view(&wide, 1));
}

void LOGMessage::addInteger(long long value, std::size_t size) {
  if (m_stream == nullptr) return guard([&] { m_text.append(value); });
  // In other bases a negative number is shown as the bits of its own type.
  const std::size_t unused = 8 * (sizeof value - size);
  if (m_stream->hasBase()) return addInteger(static_cast<unsigned long long>(value) << unused >> unused, size);
  addFormatted([&](Stream& stream) { stream.out << value; });
}

void LOGMessage::addInteger(unsigned long long value, std::size_t /*size*/) {
  if (m_stream == nullptr) return guard([&] { m_text.append(value); });
  addFormatted([&](Stream& stream) { stream.out << value; });
}

template <typename Number>
void LOGMessage::addShortest(Number value) {
  char room[I18NUtf8Buffer::MOST_DIGITS];
  if (m_stream == nullptr) return guard([&] { m_text.appendChecked(shortest(value, room)); });
  addFormatted([&](Stream& stream) {
    std::ostream& out = stream.out;
    if (stream.hasForm()) {
      const std::streamsize precision = out.precision();
      if (precision == NO_PRECISION) out.precision(USUAL_PRECISION);
      out << value;
      out.precision(precision);
      return;
    }
    std::string text(shortest(value, room));
    if ((out.flags() & std::ios_base::showpos) && !std::signbit(value)) text.insert(0, 1, '+');
    if (out.flags() & std::ios_base::uppercase) makeUppercase(text);
    out << text;
  });
}

void LOGMessage::addFloating(float value) { addShortest(value); }
void LOGMessage::addFloating(double value) { addShortest(value); }
void LOGMessage::addFloating(long double value) { addShortest(value); }
char* LOGMessage::putShortest(char* at, double value) { return putNumber(at, value); }
