#include "log4vrk/core/LOGMessage.h"

#include <new>
#include <sstream>

namespace {

inline std::ostringstream& streamIn(unsigned char* memory) {
  return *std::launder(reinterpret_cast<std::ostringstream*>(memory));
}

}  // namespace

LOGMessage::Stream::Stream() {
  static_assert(sizeof(std::ostringstream) <= sizeof m_memory && alignof(std::ostringstream) <= 8);
  new (m_memory) std::ostringstream;
}

LOGMessage::Stream::~Stream() { streamIn(m_memory).~basic_ostringstream(); }

std::ostream& LOGMessage::Stream::get() { return streamIn(m_memory); }

void LOGMessage::Stream::appendTo(I18NUtf8Buffer& text) { text.append(std::string_view(streamIn(m_memory).str())); }

void LOGMessage::appendNumber(double number) {
  Stream stream;
  stream.get() << number;
  stream.appendTo(m_text);
}

void LOGMessage::appendNumber(long double number) {
  Stream stream;
  stream.get() << number;
  stream.appendTo(m_text);
}
