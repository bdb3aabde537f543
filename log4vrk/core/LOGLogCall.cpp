// The way of an event from a log call to the appenders: the part of a logger that has to be fast.

#include <typeinfo>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggerRepository.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGMessage.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGAppenderList.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGStatementCall.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/internal/I18NAscii.h"

namespace {

// Runs what makes and delivers an event, and lets nothing out. What an application class raises in its clone() ends
// here too: a log call must not fail where the same program without logging would not.
template <typename Operation>
[[gnu::always_inline]] inline void contained(Operation operation) {
  try {
    operation();
  } catch (VRKThrowable& error) {
    LOGLogLog::error(error);
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
  }
}

// Runs a delivery. What it raises has its line in the internal log already.
template <typename Operation>
[[gnu::always_inline]] inline void delivered(Operation operation) {
  try {
    operation();
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
  }
}

// A log call whose event is there already: see LOGStatementCall.
struct EventCall {
  LOGLoggingEvent* event() const { return m_event; }
  bool appendFast(const LOGAppenderInternals& internals, LOGAppenderSkeleton& appender) const {
    return internals.appendFast(appender, m_event);
  }
  LOGLoggingEvent* const m_event;
};

bool hasUnpairedSurrogate(std::u16string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if ((text[i] & 0xF800) != 0xD800) continue;
    const bool isPair = text[i] < 0xDC00 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
    if (!isPair) return true;
    ++i;
  }
  return false;
}

// Whether an object is a text and nothing else, so that a copy of the text is as good as its clone().
bool isText(const LOGObject* message) {
  return message != nullptr && typeid(*message) == typeid(LOGObject) && message->instanceOf().isEmpty();
}

}  // namespace

void LOGLogger::forcedLog(const I18NString& fqn, LOGLevel* level, LOGObject* message) {
  if (isText(message)) {
    logText(fqn, level, message->toString().view());
    return;
  }
  contained([&] {
    LOGLoggingEvent event(fqn, this, level, message);
    event.m_isPassing = true;
    deliver(&event);
  });
}

// No lock is taken to find the appenders: LOGAppenderUse says which list is in use. The fast path is for a single
// appender, because only then it need not be kept that all appenders get the events in one order.
template <typename Call>
[[gnu::always_inline]] inline int LOGLogger::append(Call& call, LOGThreadState& thread) {
  if (appenders().load(std::memory_order_relaxed) == nullptr) return 0;  // as of most loggers
  const LOGAppenderUse use(thread.uses.delivering, appenders());
  const LOGAppenderList* const list = use.list();
  if (list == nullptr) return 0;
  if (list->fast != nullptr && call.appendFast(*list->fast, *list->attached[0].appender)) return 1;
  const VRKThreadGuard guard(m_order);  // the walk is inside a scope already
  return list->append(call.event(), thread, appenders());
}

// From the child to the parent. One logger is left before the next is entered, so that no thread holds two of them.
template <typename Call>
[[gnu::always_inline]] inline int LOGLogger::walk(Call& call, LOGThreadState& thread) {
  return logReport("LOGLogger::callAppenders -- unable to lock mutex", [&]() VRK_INLINED {
    int writes = 0;
    for (LOGLogger* logger = this; logger != nullptr; logger = logger->getParent()) {
      writes += logger->append(call, thread);
      if (logger->getAdditivity() == 0) break;
    }
    return writes;
  });
}

template <typename Call>
[[gnu::always_inline]] inline void LOGLogger::callEach(Call& call) {
  LOGThreadState& thread = LOGThreadState::current();
  if (thread.deferral.calls > 0) {
    LOGDeferral::defer(this, call.event());
    return;
  }
  const LOGDeferral deferral(thread);
  const LOGGate::Pass pass(thread);
  if (walk(call, thread) != 0) return;
  if (LOGLoggerRepository* const repository = getRepository()) repository->emitNoAppenderWarning(this);
}

void LOGLogger::callAppenders(LOGLoggingEvent* event) {
  EventCall call{event};
  callEach(call);
}

void LOGLogger::deliver(LOGLoggingEvent* event) {
  delivered([&] { callAppenders(event); });
}

[[gnu::always_inline]] inline void LOGLogger::logUtf8(const I18NString& fqn, LOGLevel* level, std::string_view utf8,
                                                      const LOGSourceLocation* place, std::string_view fields) {
  contained([&]() VRK_INLINED {
    if (&fqn != &m_FQCN) {
      LOGLoggingEvent event(fqn, this, level, utf8);
      event.m_place = place;
      event.m_fields = fields;
      deliver(&event);
      return;
    }
    LOGStatementCall call(*this, level, place, utf8, fields);
    delivered([&]() VRK_INLINED { callEach(call); });
  });
}

void LOGLogger::logStatement(LOGLevel* level, const LOGPackedText& text, const LOGSourceLocation* place) {
  char memory[LOGMessage::ROOM];
  I18NUtf8Buffer room(memory, sizeof memory);
  contained([&]() VRK_INLINED {
    LOGStatementCall call(*this, level, place, text, room);
    delivered([&]() VRK_INLINED { callEach(call); });
  });
}

void LOGLogger::logStatement(LOGLevel* level, std::string_view bytes, const LOGSourceLocation* place) {
  if (i18nIsAscii(bytes.data(), bytes.size())) return logUtf8(m_FQCN, level, bytes, place);
  LOGMessage message;
  message << bytes;
  logUtf8(m_FQCN, level, message.utf8(), place);
}

void LOGLogger::logStatement(LOGLevel* level, std::string_view bytes, const LOGSourceLocation* place,
                             std::string_view fields) {
  LOGMessage message;
  message << bytes;
  logUtf8(m_FQCN, level, message.utf8(), place, fields);
}

void LOGLogger::forcedLog(LOGLevel* level, const LOGMessage& message, const LOGSourceLocation* place) {
  logStatement(level, message.utf8(), place);
}

void LOGLogger::logText(const I18NString& fqn, LOGLevel* level, std::string_view utf8) {
  LOGMessage message;
  message << utf8;
  logUtf8(fqn, level, message.utf8(), nullptr);
}

void LOGLogger::logText(const I18NString& fqn, LOGLevel* level, std::wstring_view wide) {
  contained([&] { logText(fqn, level, I18NString(wide).view()); });
}

// Texts travel in UTF-8, in which an unpaired surrogate cannot be written. A program that looks at the message shall
// find it all the same, so such a text goes as an object.
void LOGLogger::logText(const I18NString& fqn, LOGLevel* level, std::u16string_view utf16) {
  LOGMessage message;
  message << utf16;
  if (message.utf8().size() == utf16.size() || !hasUnpairedSurrogate(utf16)) {
    logUtf8(fqn, level, message.utf8(), nullptr);
    return;
  }
  contained([&] {
    LOGObject object{I18NString(utf16)};
    LOGLoggingEvent event(fqn, this, level, &object);
    event.m_isPassing = true;
    deliver(&event);
  });
}

// For a dispatcher thread: it must not wait for a logger, whose user may be waiting for space in the thread's queue.
bool LOGLogger::tryAppend(LOGLoggingEvent* event, int& writes) {
  const LOGTryGuard guard(m_order);
  if (!guard.holds()) return false;
  LOGThreadState& thread = LOGThreadState::current();
  const LOGAppenderUse use(thread.uses.delivering, appenders());
  if (use.list() != nullptr) writes += use.list()->append(event, thread, appenders());
  return true;
}

bool LOGLogger::deliverOn(LOGDeferredEvent& putOff) {
  try {
    return logReport("LOGLogger::callAppenders -- unable to lock mutex", [&] {
      while (putOff.logger != nullptr) {
        if (!putOff.logger->tryAppend(putOff.event.get(), putOff.writes)) return false;
        putOff.logger = putOff.logger->getAdditivity() == 0 ? nullptr : putOff.logger->getParent();
      }
      LOGLoggerRepository* const repository = putOff.origin->getRepository();
      if (putOff.writes == 0 && repository != nullptr) repository->emitNoAppenderWarning(putOff.origin);
      return true;
    });
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    return true;  // reported; the event has had its chance
  }
}
