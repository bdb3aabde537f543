// Events as syslog messages in the form of RFC 5424.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "log4vrk/platform/VRKExport.h"

class LOGLoggingEvent;

/// A message that still lacks its place in the stream, which it gets when it is queued.
struct LOGEncodedEvent {
  std::string text;
  std::size_t stampAt = 0;  // where in the text the place goes, 0 when it is there
  std::uint64_t sequence = 0;
};

/// Thread safety: immutable.
class LOG4VRK_EXPORT_FOR_TESTS LOGEventEncoder {
 public:
  /// In bytes: what encode() and stamp() make is never longer.
  static constexpr std::size_t LONGEST = 61440;
  static constexpr std::size_t LONGEST_STAMP = 200;
  /// Of logger, thread and context each, before escaping.
  static constexpr std::size_t LONGEST_VALUE = 1024;

  LOGEventEncoder(std::string_view hostName, std::string_view programName, long processId);

  /// `message` is UTF-8; one line feed at its end is left out. A message that is too long is cut, and says so at its
  /// end.
  LOGEncodedEvent encode(LOGLoggingEvent& event, std::string_view message, bool withLocation) const;

  /// Makes the text the whole message: `sequence` counts the events of the stream from 1. Once; a stamped event stays
  /// as it is.
  static void stamp(LOGEncodedEvent& event, const std::string& stream);

  /// The first bytes of a UTF-8 text, at most so many, without a piece of a character at the end.
  static std::string_view prefix(std::string_view utf8, std::size_t most);

 private:
  std::string m_origin;  // host, program and process
};
