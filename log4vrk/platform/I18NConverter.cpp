#include "log4vrk/platform/I18NConverter.h"

std::string I18NConverter::fromUnicodeStream(const I18NString& text, std::size_t limit) {
  std::string bytes = text.toUtf8();
  if (bytes.size() <= limit) return bytes;
  // Back to where a character begins: the bytes in the middle of one are 10xxxxxx.
  while (limit > 0 && (static_cast<unsigned char>(bytes[limit]) & 0xC0) == 0x80) --limit;
  bytes.resize(limit);
  return bytes;
}
