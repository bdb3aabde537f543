#include "log4vrk/net/internal/LOGRelpFrames.h"

namespace {

constexpr std::size_t MOST_DIGITS = 9;

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

}  // namespace

int LOGRelpFrame::code() const {
  if (data.size() < 3 || !isDigit(data[0]) || !isDigit(data[1]) || !isDigit(data[2])) return 0;
  if (data.size() > 3 && isDigit(data[3])) return 0;
  return (data[0] - '0') * 100 + (data[1] - '0') * 10 + (data[2] - '0');
}

void LOGRelpFrame::append(std::string& out, std::uint32_t number, std::string_view command, std::string_view data) {
  out += std::to_string(number);
  out += ' ';
  out += command;
  out += ' ';
  out += std::to_string(data.size());
  if (!data.empty()) {
    out += ' ';
    out += data;
  }
  out += '\n';
}

void LOGRelpParser::add(std::string_view bytes) {
  m_bytes.erase(0, m_next);
  m_next = 0;
  m_bytes.append(bytes);
}

LOGRelpParser::Result LOGRelpParser::next(LOGRelpFrame& frame) {
  if (m_broken) return BROKEN;
  std::size_t position = m_next;
  const Result result = parse(frame, position);
  if (result == FRAME) m_next = position;
  m_broken = result == BROKEN;
  return result;
}

LOGRelpParser::Result LOGRelpParser::parse(LOGRelpFrame& frame, std::size_t& position) const {
  std::uint32_t length = 0;
  Result result = number(position, frame.number);
  if (result != FRAME) return result;
  if (m_bytes[position++] != ' ') return BROKEN;
  result = command(position, frame.command);
  if (result != FRAME) return result;
  result = number(position, length);
  if (result != FRAME) return result;
  if (length > LONGEST_DATA) return BROKEN;
  // A frame without data may do without the space, too.
  if (m_bytes[position] == ' ') {
    ++position;
  } else if (length != 0) {
    return BROKEN;
  }
  if (m_bytes.size() - position <= length) return NEEDS_MORE;
  frame.data.assign(m_bytes, position, length);
  position += length;
  return m_bytes[position++] == '\n' ? FRAME : BROKEN;
}

// The byte that ends the digits has to be there.
LOGRelpParser::Result LOGRelpParser::number(std::size_t& position, std::uint32_t& value) const {
  const std::size_t begin = position;
  value = 0;
  while (position < m_bytes.size() && isDigit(m_bytes[position])) {
    if (position - begin == MOST_DIGITS) return BROKEN;
    value = value * 10 + static_cast<std::uint32_t>(m_bytes[position++] - '0');
  }
  if (position == m_bytes.size()) return NEEDS_MORE;
  return position == begin ? BROKEN : FRAME;
}

LOGRelpParser::Result LOGRelpParser::command(std::size_t& position, std::string& text) const {
  const std::size_t begin = position;
  while (position < m_bytes.size() && isLetter(m_bytes[position])) {
    if (position++ - begin == LONGEST_COMMAND) return BROKEN;
  }
  if (position == m_bytes.size()) return NEEDS_MORE;
  if (position == begin || m_bytes[position] != ' ') return BROKEN;
  text.assign(m_bytes, begin, position - begin);
  ++position;
  return FRAME;
}
