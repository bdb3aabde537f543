// One attempt to reach the log server, and the connection that comes of it.

#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKNameLookup.h"
#include "log4vrk/platform/internal/VRKTlsStream.h"

class LOGRelpSession;
class VRKWakeUp;

/// Where the log server is, and how to talk to it.
struct LOG4VRK_EXPORT_FOR_TESTS LOGLogServer {
  std::string host;
  long port = 0;
  bool secure = false;
  VRKTlsStream::Settings tls;

  /// "host:port", for people.
  std::string name() const;
};

/// Looks the name up, connects, and then carries the bytes of a session. It never waits: whoever owns it waits for its
/// descriptor, or for the wake-up, and calls step() again.
///
/// Thread safety: not thread-safe.
/// Errors: a connection that is over stays so, and reason() says why, for people.
class LOG4VRK_EXPORT_FOR_TESTS LOGConnection {
 public:
  using Clock = std::chrono::steady_clock;

  /// The server has to finish what it is asked for within this time: TLS, the opening of the session.
  static constexpr std::chrono::seconds LONGEST_OPENING{10};
  /// And it has to answer something within this time while events are unanswered.
  static constexpr std::chrono::seconds LONGEST_SILENCE{60};

  LOGConnection(const LOGLogServer& server, LOGRelpSession& session, std::shared_ptr<VRKWakeUp> wakeUp);
  ~LOGConnection();

  /// Goes as far as it gets without waiting.
  void step();

  bool isOver() const { return m_over; }
  const std::string& reason() const { return m_reason; }
  /// It was not the server that ended it.
  bool timedOut() const { return m_timedOut; }
  /// There may be more to read at once, although the descriptor does not show it.
  bool hasMore() const { return m_hasMore; }

  /// What to wait for. -1 when there is nothing.
  int descriptor() const { return m_stream ? m_stream->descriptor() : -1; }
  bool hasToWrite() const;
  /// When to call step() at the latest.
  Clock::time_point deadline() const;

 private:
  LOG4VRK_HIDDEN void connect();
  LOG4VRK_HIDDEN void carry();
  LOG4VRK_HIDDEN void receive();
  LOG4VRK_HIDDEN void send();
  LOG4VRK_HIDDEN void endOfStream();
  LOG4VRK_HIDDEN void watchTheClock();
  LOG4VRK_HIDDEN void end(const std::string& reason);

  const LOGLogServer m_server;
  LOGRelpSession& m_session;
  std::unique_ptr<VRKNameLookup> m_lookup;
  std::unique_ptr<VRKStream> m_stream;
  bool m_connected = false;
  bool m_hasMore = false;
  bool m_timedOut = false;
  std::uint64_t m_answers = 0;  // of the session, when the deadline was set
  Clock::time_point m_deadline = Clock::time_point::max();
  bool m_over = false;
  std::string m_reason;
};
