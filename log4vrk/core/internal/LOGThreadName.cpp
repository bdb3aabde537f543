#include "log4vrk/core/internal/LOGThreadName.h"

#include "log4vrk/platform/VRKThread.h"

void LOGThreadName::make() {
  m_text += VRKThread::currentThreadId();
  m_utf8 = m_text.toUtf8();
}
