#include "log4vrk/core/LOGObjectRenderer.h"

#include <algorithm>

#include "log4vrk/core/LOGDefaultRenderer.h"
#include "log4vrk/platform/I18NConverter.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

constexpr long LARGEST_LIMIT_WITHOUT_TEXT = 5;

// Renderers get a bare pointer, since programs have written them so. An appender says on the side how much room there
// is behind it.
thread_local const LOGObjectRenderer::Bound* t_bound = nullptr;

}  // namespace

LOGObjectRenderer::LOGObjectRenderer() { instance("LOGObjectRenderer"); }
LOGObjectRenderer::~LOGObjectRenderer() = default;

void LOGObjectRenderer::writeExtHeader(unsigned char*, long*) {}

void LOGObjectRenderer::writeExtData(LOGObject*, unsigned char*, long*) {}

long LOGObjectRenderer::getDataLength(LOGObject*) { return 0; }

LOGObjectRenderer::Bound::Bound(const unsigned char* buffer, long size)
    : m_buffer(buffer), m_size(size), m_outer(t_bound) {
  t_bound = this;
}

LOGObjectRenderer::Bound::~Bound() { t_bound = m_outer; }

// A buffer that nobody has bound is the program's own, and large enough as far as anybody knows.
bool LOGObjectRenderer::fits(const unsigned char* buffer, long offset, long count) {
  if (t_bound == nullptr || buffer < t_bound->m_buffer || buffer > t_bound->m_buffer + t_bound->m_size) return true;
  return offset <= t_bound->m_size - (buffer - t_bound->m_buffer) - count;
}

// The offset advances even where nothing is written. So the appender sees how large the message would have been.
void LOGObjectRenderer::writeBytes(unsigned long long value, int count, unsigned char* buffer, long* offset) {
  VRK_ASSERT(buffer);
  VRK_ASSERT(offset);
  if (!fits(buffer, *offset, count)) {
    *offset += count;
    return;
  }
  for (int shift = 8 * (count - 1); shift >= 0; shift -= 8)
    buffer[(*offset)++] = static_cast<unsigned char>(value >> shift);
}

void LOGObjectRenderer::writeByte(unsigned char value, unsigned char* buffer, long* offset) {
  writeBytes(value, 1, buffer, offset);
}

void LOGObjectRenderer::writeShort(short value, unsigned char* buffer, long* offset) {
  writeBytes(static_cast<unsigned short>(value), 2, buffer, offset);
}

void LOGObjectRenderer::writeInt(long value, unsigned char* buffer, long* offset) {
  writeBytes(static_cast<unsigned long>(value), 4, buffer, offset);
}

void LOGObjectRenderer::writeUInt(unsigned long value, unsigned char* buffer, long* offset) {
  writeBytes(value, 4, buffer, offset);
}

void LOGObjectRenderer::writeLong(long long value, unsigned char* buffer, long* offset) {
  writeBytes(static_cast<unsigned long long>(value), 8, buffer, offset);
}

void LOGObjectRenderer::writeUTF(I18NString* text, unsigned char* buffer, long* offset) {
  writeUTFExt(text, buffer, offset, MOST_TEXT);
}

void LOGObjectRenderer::writeUTFExt(I18NString* text, unsigned char* buffer, long* offset, long limit) {
  VRK_ASSERT(buffer);
  VRK_ASSERT(offset);
  if (limit <= LARGEST_LIMIT_WITHOUT_TEXT) return;
  const std::string bytes =
      text != nullptr ? I18NConverter::fromUnicodeStream(*text, static_cast<std::size_t>(std::min(limit, MOST_TEXT)))
                      : std::string();
  writeBytes(bytes.size(), 2, buffer, offset);
  const long count = static_cast<long>(bytes.size());
  if (fits(buffer, *offset, count)) std::copy(bytes.begin(), bytes.end(), buffer + *offset);
  *offset += count;
}

LOGDefaultRenderer::LOGDefaultRenderer() { instance("LOGDefaultRenderer"); }
LOGDefaultRenderer::~LOGDefaultRenderer() = default;

I18NString* LOGDefaultRenderer::doRender(LOGObject* object) {
  return object == nullptr ? nullptr : vrkNew<I18NString>(VRK_HERE, object->toString());
}
