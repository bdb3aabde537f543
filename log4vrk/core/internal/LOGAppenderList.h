// The appenders of a logger or of a queue as they are at one moment.

#pragma once

#include <memory>
#include <vector>

#include "log4vrk/core/internal/LOGAppenderUse.h"

class LOGAppenderBundle;
class LOGAppenderSkeleton;
class LOGLoggingEvent;
struct LOGAppenderInternals;
struct LOGThreadState;

/// Immutable: a change makes another list. See LOGAppenderUse for how long one lives.
///
/// Ownership: an appender that the configurator made lives as long as a list has it. One of the program's is lent.
struct LOGAppenderList {
  struct Attached {
    LOGAppenderSkeleton* appender;
    std::shared_ptr<LOGAppenderBundle> share;  // null for an appender of the program's
  };

  explicit LOGAppenderList(std::vector<Attached> appenders);

  /// Has each appender activate its options and then append the event. What is called here may change the appenders at
  /// `place`, where this list was: one that is not attached any more is not called, and neither is `except`. Returns
  /// how many there are.
  int append(LOGLoggingEvent* event, LOGThreadState& thread, const LOGAppenderUse::Place& place,
             const LOGAppenderSkeleton* except = nullptr) const;
  bool has(const LOGAppenderSkeleton* appender) const;

  const std::vector<Attached> attached;
  /// Of the only appender, when it has a fast path.
  const LOGAppenderInternals* fast;
};
