// Texts that an output has to equal, kept in files.

#pragma once

#include <fstream>
#include <iterator>
#include <string>

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGManager.h"

namespace vrktest {

/// All occurrences.
inline std::string replaced(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += with.size())
    text.replace(at, what.size(), with);
  return text;
}

/// tests/layouts/golden/<name>
inline std::string golden(const std::string& name) {
  std::ifstream in(LOG4VRK_SOURCE_DIR "/tests/layouts/golden/" + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// An event without a message, to be copied and filled: the copies have the time stamp in common.
inline LOGLoggingEvent emptyEvent(const I18NString& loggerName, LOGLevel* level) {
  LOGLoggingEvent event("LOGLogger", LOGManager::getLogger(loggerName), level, nullptr);
  event.setThreadName("worker<1>");
  return event;
}

}  // namespace vrktest
