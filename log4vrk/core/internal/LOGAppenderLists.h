// What loggers and asynchronous appenders need of the container that holds their appenders.

#pragma once

#include <memory>

#include "log4vrk/core/LOGAppenderAttachableImpl.h"
#include "log4vrk/core/internal/LOGAppenderList.h"
#include "log4vrk/core/internal/LOGAppenderUse.h"

/// Steps of a removal, for a user who must not hold the container's lock while appenders close or while it waits.
struct LOGAppenderLists {
  /// Keeps what it lists, as far as that is shared. Null is an empty list.
  using Snapshot = std::shared_ptr<const LOGAppenderList>;

  // Under the lock.
  static Snapshot snapshot(const LOGAppenderAttachableImpl& container);
  /// Marks and unlinks what is in `appenders`; what was attached since stays.
  static void forget(LOGAppenderAttachableImpl& container, const Snapshot& appenders, LOGHashtable* table);
  /// The lists that were replaced and may still be in use, for LOGAppenderUse::letGo().
  static LOGAppenderUse::Lists takeEarlier(LOGAppenderAttachableImpl& container);

  // Without it.
  /// Closes every one, then raises what the first failure raised.
  static void closeAll(const Snapshot& appenders);
};
