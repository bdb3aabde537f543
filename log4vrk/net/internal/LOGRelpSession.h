// The client's side of the Reliable Event Logging Protocol, without a connection of its own.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "log4vrk/net/internal/LOGRelpFrames.h"
#include "log4vrk/platform/VRKExport.h"

/// An event on its way to the log server.
struct LOGOutgoing {
  std::string text;            // what goes into the frame
  std::uint64_t sequence = 0;  // of the stream that it belongs to
  std::chrono::steady_clock::time_point inMemorySince{};
  bool kept = false;           // the recovery files have it, too
  std::uint64_t position = 0;  // there; 0 when it is not known, or not kept

  enum Answer { NONE, REFUSED_ONCE, REFUSED, ACCEPTED };

  // The session's.
  Answer answer = NONE;
  std::uint32_t number = 0;  // of its frame in this session, 0 when it has none yet

  bool isAnswered() const { return answer >= REFUSED; }
};

/// Takes events up to a window, turns them into frames, and keeps each until the server has answered it. It is fed with
/// the bytes that come in and yields the bytes to send; a new connection begins with begin(), which sends everything
/// that is unanswered again, in order.
///
/// An event that the server refuses is sent once more; refused again, it counts as answered. After a connection that
/// was lost with events on their way, one event at a time is on its way until the server has accepted one, then two,
/// then four: so an event that makes the server break the connection is soon alone.
///
/// Thread safety: not thread-safe.
/// Errors: a session that has come to its end is OVER, and reason() says why, for people; nothing when it was asked to.
class LOG4VRK_EXPORT_FOR_TESTS LOGRelpSession {
 public:
  /// IDLE until begin(); OPENING until the server has accepted the session; CLOSING until it has said goodbye.
  enum State { IDLE, OPENING, READY, CLOSING, OVER };

  static constexpr std::size_t WINDOW = 128;  // events
  static constexpr std::size_t WINDOW_BYTES = 1 << 20;

  State state() const { return m_state; }
  const std::string& reason() const { return m_reason; }

  /// On a new connection.
  void begin();
  void receive(std::string_view bytes);
  /// Says goodbye, when the session is READY.
  void close();
  /// The connection is gone: IDLE, and what is unanswered stays.
  void interrupt();
  /// Whatever is unanswered is somebody else's business now.
  void forget();

  /// What is to be written to the connection, and how much of it has been.
  std::string_view output() const { return std::string_view(m_output).substr(m_written); }
  void written(std::size_t count);

  bool hasRoom() const { return m_unanswered.size() < WINDOW && m_bytes < WINDOW_BYTES; }
  /// What raises leaves session and event as they were.
  void add(LOGOutgoing&& event);
  /// How many events have been sent on this connection and are not answered.
  std::size_t onTheirWay() const { return m_onTheirWay; }
  /// The first of them counts as refused.
  void refuse();

  /// Whether the event at the front has been answered; if so, moves it out. Events leave in the order in which they
  /// were added.
  bool takeAnswered(LOGOutgoing& event);

  /// How many answers there have been, to whatever was sent.
  std::uint64_t answers() const { return m_answers; }
  /// How many frames with events have been made, repetitions included.
  std::uint64_t sent() const { return m_sent; }

  /// In order. Whoever owns the session may note that they are kept, and change nothing else.
  std::deque<LOGOutgoing>& unanswered() { return m_unanswered; }

 private:
  LOG4VRK_HIDDEN void send(LOGOutgoing& event);
  LOG4VRK_HIDDEN void sendWhatMayGo();
  LOG4VRK_HIDDEN void settle(LOGOutgoing& event, LOGOutgoing::Answer answer);
  LOG4VRK_HIDDEN void send(std::string_view command, std::string_view data);
  LOG4VRK_HIDDEN void handle(const LOGRelpFrame& frame);
  LOG4VRK_HIDDEN void answerToOpen(const LOGRelpFrame& frame);
  LOG4VRK_HIDDEN void answerToEvent(const LOGRelpFrame& frame);
  LOG4VRK_HIDDEN void end(const std::string& reason);

  State m_state = IDLE;
  std::string m_reason;
  LOGRelpParser m_parser;
  std::string m_output;
  std::size_t m_written = 0;   // of m_output
  std::uint32_t m_number = 0;  // of the last frame
  std::uint32_t m_closeNumber = 0;
  std::deque<LOGOutgoing> m_unanswered;
  std::size_t m_window = WINDOW;  // how many events may be on their way
  std::size_t m_onTheirWay = 0;
  std::uint64_t m_answers = 0;
  std::uint64_t m_sent = 0;
  std::size_t m_bytes = 0;  // of the texts in it
};
