// What the filters of the library's own classes can do for the library alone.

#pragma once

#include <memory>

#include "log4vrk/core/LOGFilter.h"
#include "log4vrk/core/LOGLoggingEvent.h"

/// A table of functions, for the reason that LOGAppenderInternals gives.
struct LOGFilterInternals {
  /// An event by which the filter says what it has denied. Null: there is nothing to say, or not yet; `isLast` says
  /// that nobody will ask again. The caller holds the lock of the filter's appender, and appends the event without
  /// asking any filter.
  std::unique_ptr<LOGLoggingEvent> (*takeNotice)(LOGFilter& filter, bool isLast);

  /// For the constructors of these classes.
  static void set(LOGFilter& filter, const LOGFilterInternals& internals) { filter.m_internals = &internals; }
  /// Null for filters of the program's own.
  static const LOGFilterInternals* of(const LOGFilter& filter) { return filter.m_internals; }
};
