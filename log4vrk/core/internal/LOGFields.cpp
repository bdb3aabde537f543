#include "log4vrk/core/internal/LOGFields.h"

#include <charconv>
#include <cstring>
#include <exception>

namespace {

constexpr std::size_t HEADER = 6;            // type, length of the name, length of the value
constexpr std::size_t LONGEST = 0x3FFFFFFF;  // of a text: three bytes for each would still fit into the length

template <typename Number>
Number numberAt(std::string_view bytes) {
  Number number{};
  if (bytes.size() >= sizeof number) std::memcpy(&number, bytes.data(), sizeof number);
  return number;
}

bool isWithin(std::string_view utf8, std::size_t position) {
  return (static_cast<unsigned char>(utf8[position]) & 0xC0) == 0x80;
}

}  // namespace

std::int64_t LOGFields::Field::integer() const { return numberAt<std::int64_t>(value); }

double LOGFields::Field::floating() const { return numberAt<double>(value); }

void LOGFields::Field::appendValue(I18NUtf8Buffer& out) const {
  switch (type) {
    case BOOLEAN:
      return out.appendChecked(integer() != 0 ? "true" : "false");
    case SIGNED:
      return out.append(static_cast<long long>(integer()));
    case UNSIGNED:
      return out.append(static_cast<unsigned long long>(integer()));
    case FLOATING:
      return out.extendTo(LOGMessage::putShortest(out.room(I18NUtf8Buffer::MOST_DIGITS), floating()));
    case TEXT:
      return out.append(value);
    default:
      return out.appendChecked("null");
  }
}

bool LOGFields::Reader::next(Field& field) {
  if (m_left.size() < HEADER) return false;
  const std::size_t name = static_cast<unsigned char>(m_left[1]);
  const std::size_t value = numberAt<std::uint32_t>(m_left.substr(2));
  if (m_left.size() - HEADER < name || m_left.size() - HEADER - name < value) return false;
  field = {m_left.substr(HEADER, name), m_left.substr(HEADER + name, value), static_cast<Type>(m_left[0])};
  m_left.remove_prefix(HEADER + name + value);
  return true;
}

void LOGFields::addAll(std::string_view bytes) {
  Reader reader(bytes);
  for (Field field; reader.next(field);) put(field.name, field.type, field.value);
}

void LOGFields::addInteger(std::string_view name, Type type, std::int64_t value) {
  put(name, type, {reinterpret_cast<const char*>(&value), sizeof value});
}

void LOGFields::addFloating(std::string_view name, double value) {
  put(name, FLOATING, {reinterpret_cast<const char*>(&value), sizeof value});
}

// As people read it: 0.1f is 0.1, and not the 0.10000000149011612 that has the same bits as a double.
void LOGFields::addFloating(std::string_view name, float value) {
  char digits[I18NUtf8Buffer::MOST_DIGITS];
  double same = static_cast<double>(value);
  const char* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  std::from_chars(digits, end, same);
  addFloating(name, same);
}

// The lengths are stored last, since a text that is not well-formed changes its length.
void LOGFields::put(std::string_view name, Type type, std::string_view value) {
  const std::size_t start = m_bytes.size();
  try {
    m_bytes.extendTo(m_bytes.room(HEADER) + HEADER);
    m_bytes.append(name.substr(0, LONGEST));
    std::size_t nameLength = m_bytes.size() - start - HEADER;
    if (nameLength > LONGEST_NAME) {
      nameLength = LONGEST_NAME;
      while (isWithin(m_bytes.view(), start + HEADER + nameLength)) --nameLength;
      m_bytes.cutTo(start + HEADER + nameLength);
    }
    type == TEXT ? m_bytes.append(value.substr(0, LONGEST)) : m_bytes.appendChecked(value);
    const auto length = static_cast<std::uint32_t>(m_bytes.size() - start - HEADER - nameLength);
    char* const header = m_bytes.room(0) - (m_bytes.size() - start);
    header[0] = type;
    header[1] = static_cast<char>(nameLength);
    std::memcpy(header + 2, &length, sizeof length);
  } catch (const std::exception&) {
    m_bytes.cutTo(start);
  }
}
