// What the appenders of the library's own classes can do for the library alone.

#pragma once

#include <memory>
#include <typeinfo>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGLoggingEvent.h"

struct LOGAppenderList;
class LOGStatementCall;

/// A table of functions that a class of appenders has beside its virtual ones. It is no base class with further virtual
/// functions, because programs derive from these classes, too, and would override a release() or a drain() by accident.
///
/// The fast path: an event whose message is a text and nothing else needs no application code on its way. So one that
/// goes to an appender of exactly the library's own class is formatted without a lock and written under the appender's
/// alone. An appender class that a program has derived may have replaced any step, and gets its events the ordinary
/// way.
struct LOGAppenderInternals {
  const std::type_info* type;  // the class whose steps these are
  /// Whether doAppend() calls append() without the appender's lock, for an appender of exactly this class.
  bool appendsWithoutLock = false;
  /// doAppend() by the fast path. False, with nothing done, when the event has to go the ordinary way. Null: there is
  /// no such path.
  bool (*appendFast)(LOGAppenderSkeleton& appender, LOGLoggingEvent* event) = nullptr;
  /// From this call to release() the appender need not let go of each event before append() returns, as far as it is
  /// the calling thread that appends. A thread that serves a queue says so before it hands over many events at once.
  void (*holdBack)(LOGAppenderSkeleton& appender) = nullptr;
  void (*release)(LOGAppenderSkeleton& appender) = nullptr;
  /// Returns when what was appended before has been delivered, or after some seconds. False: close() would have to wait
  /// for the rest. For appenders that deliver later.
  bool (*drain)(LOGAppenderSkeleton& appender) = nullptr;
  /// As appendFast, for the call of a statement of which no event has been made: for a queue, which needs none. An
  /// appender that has this has appendFast, too, which takes what this one does not.
  bool (*appendCall)(LOGAppenderSkeleton& appender, LOGStatementCall& call) = nullptr;
  /// The appenders that this one gives its events to; null when there are none. For appenders that have others.
  std::shared_ptr<const LOGAppenderList> (*attached)(LOGAppenderSkeleton& appender) = nullptr;

  /// For the constructors of these classes, each after that of its base.
  static void set(LOGAppenderSkeleton& appender, const LOGAppenderInternals& internals) {
    appender.m_internals = &internals;
  }
  /// Those of the nearest class of the library's own; null when the program derived from LOGAppenderSkeleton itself.
  static const LOGAppenderInternals* of(const LOGAppenderSkeleton& appender) { return appender.m_internals; }
  /// Null unless the appender is of exactly that class, so that no step has been replaced.
  static const LOGAppenderInternals* ofWhole(const LOGAppenderSkeleton& appender) {
    const LOGAppenderInternals* const internals = appender.m_internals;
    return internals != nullptr && typeid(appender) == *internals->type ? internals : nullptr;
  }

  /// Before an appender is closed: what its filters have left to say goes to it.
  static void appendLastNotices(LOGAppenderSkeleton& appender) { appender.appendLastNotices(); }
  /// False when one of them has not delivered everything.
  static bool drainAll(const LOGAppenderList& list);
  /// Whether the events of `from` come to `target`, or they are one.
  static bool leadsTo(LOGAppenderSkeleton& from, const LOGAppenderSkeleton& target);
  /// appendFast() of an appender that writes lines: `writeLine(line)` runs under the appender's lock. Defined in
  /// LOGAppendLine.h.
  template <typename WriteLine>
  static bool appendLine(LOGAppenderSkeleton& appender, LOGLoggingEvent* event, WriteLine writeLine);

  /// The one place that decides whether an event may take the fast path, as far as event and appender are concerned:
  /// the event is a text, and no filter of the program wants to see it.
  static bool admitsFast(const LOGAppenderSkeleton& appender, const LOGLoggingEvent* event) {
    return event != nullptr && event->isText() && appender.getClosed() != 1 && appender.getFilter() == nullptr;
  }
};
