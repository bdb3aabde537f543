// Whether an appender has taken an event.

#pragma once

#include <utility>

#include "log4vrk/core/internal/LOGThreadState.h"

/// An appender returns nothing from doAppend(). So what refuses an event on its way, or loses it, says refuse() on the
/// thread that appends, and who has to know looks whether that was said while it handed the event over. A filter or a
/// threshold that denies an event is no refusal: the appender does what it is told.
class LOGTaking {
 public:
  explicit LOGTaking(LOGThreadState& thread) : m_thread(thread), m_refusals(thread.refusals) {}
  /// Asked once. A refusal is whoever asks' to deal with: nobody further out hears of it.
  bool isTaken() { return std::exchange(m_thread.refusals, m_refusals) == m_refusals; }

  static void refuse() { ++LOGThreadState::current().refusals; }

 private:
  LOGThreadState& m_thread;
  const unsigned m_refusals;
};
