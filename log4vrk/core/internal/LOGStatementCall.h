// The call of a log statement on its way to the appenders.

#pragma once

#include <string_view>

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGPackedText.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/internal/VRKTime.h"

/// What is known of an event before anybody needs it as an object. A queue copies what is here and nothing else, which
/// is the short way of what has neither fields nor context; for everybody else event() makes the object. From then on
/// that is the event, since it may be changed by those who get it.
///
/// Thread safety: the logging thread's alone.
/// Ownership: borrows everything for the length of the log call.
class LOGStatementCall {
 public:
  /// `text` is well-formed; `fields` are LOGFields::bytes().
  LOGStatementCall(LOGLogger& logger, LOGLevel* level, const LOGSourceLocation* place, std::string_view text,
                   std::string_view fields)
      : m_logger(logger), m_level(level), m_place(place), m_time(VRKTime::now()), m_text(text), m_fields(fields) {}
  /// The text is put together in `room` if it is needed during the call.
  LOGStatementCall(LOGLogger& logger, LOGLevel* level, const LOGSourceLocation* place, const LOGPackedText& text,
                   I18NUtf8Buffer& room)
      : m_logger(logger), m_level(level), m_place(place), m_time(VRKTime::now()), m_packed(&text), m_room(&room) {}
  ~LOGStatementCall() {
    if (m_event != nullptr) m_event->~LOGLoggingEvent();
  }
  LOGStatementCall(const LOGStatementCall&) = delete;
  LOGStatementCall& operator=(const LOGStatementCall&) = delete;

  LOGLogger& logger() const { return m_logger; }
  LOGLevel* level() const { return m_level; }
  const LOGSourceLocation* place() const { return m_place; }
  const VRKTime::Moment& time() const { return m_time; }
  std::string_view fields() const { return m_fields; }
  /// What the text is to be made of. Null when it is there.
  const LOGPackedText* packed() const { return m_packed; }
  /// The text, which is made now if it is not there.
  std::string_view text() {
    if (m_packed != nullptr) print();
    return m_text;
  }

  LOGLoggingEvent* event() {
    if (m_event == nullptr) makeEvent();
    return m_event;
  }

  /// The short way to an appender. False, with nothing done, when there is none.
  [[gnu::always_inline]] bool appendFast(const LOGAppenderInternals& internals, LOGAppenderSkeleton& appender) {
    const bool isShort = internals.appendCall != nullptr && m_event == nullptr && !hasFields();
    return (isShort && internals.appendCall(appender, *this)) || internals.appendFast(appender, event());
  }

 private:
  bool hasFields() const { return !m_fields.empty() || LOGThreadState::current().fields.size() != 0; }
  void print();
  void makeEvent();

  LOGLogger& m_logger;
  LOGLevel* const m_level;
  const LOGSourceLocation* const m_place;
  const VRKTime::Moment m_time;
  const LOGPackedText* m_packed = nullptr;
  std::string_view m_text;
  const std::string_view m_fields;
  I18NUtf8Buffer* const m_room = nullptr;
  LOGLoggingEvent* m_event = nullptr;  // in m_memory
  alignas(LOGLoggingEvent) char m_memory[sizeof(LOGLoggingEvent)];
};
