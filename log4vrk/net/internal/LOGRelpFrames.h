// Frames of the Reliable Event Logging Protocol: what a client writes, and what it reads.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "log4vrk/platform/VRKExport.h"

/// One frame: `number SP command SP length [SP data] LF`. The number (TXNR) ties an answer to what it answers; 0 is a
/// hint of the server's that answers nothing.
struct LOGRelpFrame {
  static constexpr std::uint32_t GREATEST_NUMBER = 999999999;

  std::uint32_t number = 0;
  std::string command;
  std::string data;

  /// The code of an answer ("200 OK"), 0 when it has none.
  LOG4VRK_EXPORT_FOR_TESTS int code() const;
  /// Puts a frame at the end of `out`.
  LOG4VRK_EXPORT_FOR_TESTS static void append(std::string& out, std::uint32_t number, std::string_view command,
                                              std::string_view data);
  /// Numbers start at 1 and go up by one; after the greatest comes 1.
  static std::uint32_t next(std::uint32_t number) { return number == GREATEST_NUMBER ? 1 : number + 1; }
};

/// Reads frames out of a stream that arrives in pieces of any size. What it keeps is bounded by the longest frame it
/// takes.
///
/// Thread safety: not thread-safe.
/// Errors: after a byte that cannot stand where it stands, next() gives BROKEN for good: the stream has lost its step.
class LOG4VRK_EXPORT_FOR_TESTS LOGRelpParser {
 public:
  enum Result { FRAME, NEEDS_MORE, BROKEN };

  static constexpr std::size_t LONGEST_COMMAND = 32;
  static constexpr std::size_t LONGEST_DATA = 65536;

  void add(std::string_view bytes);
  /// Takes the next frame out. Call it until it needs more, then add() more.
  Result next(LOGRelpFrame& frame);

 private:
  LOG4VRK_HIDDEN Result number(std::size_t& position, std::uint32_t& value) const;
  LOG4VRK_HIDDEN Result command(std::size_t& position, std::string& text) const;
  LOG4VRK_HIDDEN Result parse(LOGRelpFrame& frame, std::size_t& position) const;

  std::string m_bytes;
  std::size_t m_next = 0;  // where the next frame begins
  bool m_broken = false;
};
