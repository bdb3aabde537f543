#include "log4vrk/core/LOGMessage.h"

#include "log4vrk/core/LOGThreadState.h"

namespace {

// In bytes. A larger text gives its memory back.
constexpr std::size_t MOST_KEPT = 32 * 1024;

}  // namespace

LOGMessage::LOGMessage() noexcept : LOGMessage(LOGThreadState::current()) {}

LOGMessage::LOGMessage(LOGThreadState& thread) noexcept
    : m_thread(thread), m_text(thread.messages++ == 0 ? thread.messageText : m_own) {}

LOGMessage::~LOGMessage() {
  --m_thread.messages;
  m_text.limitMemory(MOST_KEPT);
  m_text.clear();
}
