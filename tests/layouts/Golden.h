// Expected outputs that are kept in files.

#pragma once

#include "tests/support/Tests.h"

namespace vrktest {

/// tests/layouts/golden/<name>
inline std::string golden(const std::string& name) {
  return fileText(LOG4VRK_SOURCE_DIR "/tests/layouts/golden/" + name);
}

/// An event without a message, to be copied and filled: the copies have the time stamp in common.
inline LOGLoggingEvent emptyEvent(const I18NString& loggerName, LOGLevel* level) {
  LOGLoggingEvent event("LOGLogger", LOGManager::getLogger(loggerName), level, nullptr);
  event.setThreadName("worker<1>");
  return event;
}

/// What makes an event different from one that it has the rest in common with.
struct Row {
  LOGLevel* level;
  const char16_t* message;
  const char *context, *throwable;
  int location = 0;
};

inline std::string formatted(LOGLayout& layout, const LOGLoggingEvent& common, const Row& row) {
  LOGLoggingEvent event(common);
  event.setLevel(row.level);
  event.setRenderedMessage(row.message);
  event.setThrowableStrRep(row.throwable);
  if (*row.context != '\0') LOGNDC::push(row.context);
  std::string text = layout.format(&event).toUtf8();
  LOGNDC::remove();
  return text;
}

/// What the layout makes of an event of the logger com.acme.shop.Orders with that message, in the thread "main".
inline std::string formatted(LOGLayout& layout, LOGObject* message, LOGLevel* level = LOGLevel::INFO_OBJ) {
  LOGLoggingEvent event("LOGLogger", LOGManager::getLogger("com.acme.shop.Orders"), level, message);
  event.setThreadName("main");
  event.setTimeStamp(1785587696, 789000000);  // 2026-08-01 12:34:56 UTC
  return layout.format(&event).toUtf8();
}

inline std::string formatted(LOGLayout& layout, const I18NString& text = "connected") {
  LOGObject message(text);
  return formatted(layout, &message);
}

}  // namespace vrktest
