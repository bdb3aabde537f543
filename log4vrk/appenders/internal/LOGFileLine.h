// How a line comes to a file. Apart from LOGFileAppender.h because it is inlined into each class that does it: see
// LOGAppendLine.h.

#pragma once

#include "log4vrk/appenders/LOGFileAppender.h"
#include "log4vrk/appenders/internal/LOGLineWriter.h"
#include "log4vrk/core/internal/LOGAppendLine.h"
#include "log4vrk/core/internal/LOGTaking.h"
#include "log4vrk/platform/VRKFmFile.h"

/// Constants of each class.
struct LOGFileAppender::Identity {
  const char* className;
  const char* messagePrefix;  // of what it says when it opens a file
  LOGFailureTexts setFileFailures;
};

// The same for events that come by the fast path and for those that come by subappend().
[[gnu::always_inline]] inline void LOGFileAppender::writeLine(std::string_view line) {
  if (getOpen() != 1) return LOGTaking::refuse();
  VRK_ASSERT(m_qw);
  m_file->setHoldingBack(m_holder != nullptr && m_holder == &LOGThreadState::current());
  LOGLineWriter::write(*m_qw, *m_file, line);
  if (getImmediateFlush() == 1) m_qw->flush(m_file.get());
}
