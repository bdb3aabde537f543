#include "log4vrk/net/internal/LOGConnection.h"

#include <algorithm>

#include "log4vrk/net/internal/LOGRelpSession.h"
#include "log4vrk/platform/internal/VRKStreamSocket.h"

namespace {

constexpr std::size_t PIECE = 16384;
constexpr int MOST_PIECES = 16;  // at once: a server that never stops talking must not hold the thread
constexpr std::chrono::seconds BETWEEN_LOOKS{1};

}  // namespace

std::string LOGLogServer::name() const { return host + ":" + std::to_string(port); }

LOGConnection::LOGConnection(const LOGLogServer& server, LOGRelpSession& session, std::shared_ptr<VRKWakeUp> wakeUp)
    : m_server(server),
      m_session(session),
      m_lookup(std::make_unique<VRKNameLookup>(server.host.c_str(), server.port, std::move(wakeUp))) {}

LOGConnection::~LOGConnection() = default;

bool LOGConnection::hasToWrite() const {
  return m_stream && (m_stream->hasToWrite() || (m_connected && !m_session.output().empty()));
}

LOGConnection::Clock::time_point LOGConnection::deadline() const {
  // Each address has a deadline of its own, which the stream looks after.
  return m_connected || !m_stream ? m_deadline : std::min(m_deadline, Clock::now() + BETWEEN_LOOKS);
}

void LOGConnection::step() {
  if (m_over) return;
  if (!m_connected) connect();
  if (m_connected) carry();
  if (!m_over) watchTheClock();
}

void LOGConnection::connect() {
  if (!m_stream) {
    if (!m_lookup->isDone()) return;
    std::vector<VRKSocketAddress> addresses = m_lookup->takeAddresses();
    if (addresses.empty()) return end("there is no address of that name and port");
    m_deadline =
        Clock::now() + VRKStreamSocket::LONGEST_ATTEMPT * static_cast<long>(addresses.size()) + LONGEST_OPENING;
    m_stream = std::make_unique<VRKStreamSocket>(std::move(addresses));
    if (m_server.secure) m_stream = std::make_unique<VRKTlsStream>(std::move(m_stream), m_server.host, m_server.tls);
  }
  const VRKStream::Progress progress = m_stream->advance();
  if (progress == VRKStream::FAILED) return end(m_stream->failure());
  if (progress == VRKStream::PENDING) return;
  m_connected = true;
  m_session.begin();
  m_deadline = Clock::now() + LONGEST_OPENING;
}

// Reads first and, when the connection ends, last: what the server had to say counts, although nothing can be sent any
// more.
void LOGConnection::carry() {
  receive();
  send();
  if (m_session.state() == LOGRelpSession::OVER && !m_over) end(m_session.reason());
}

void LOGConnection::receive() {
  char piece[PIECE];
  m_hasMore = false;
  for (int pieces = 0; pieces < MOST_PIECES; ++pieces) {
    const long count = m_stream->read(piece, sizeof piece);
    if (count < 0 && !m_over) endOfStream();
    if (count <= 0) return;
    m_session.receive({piece, static_cast<std::size_t>(count)});
    if (m_session.state() == LOGRelpSession::OVER) return;
  }
  m_hasMore = true;
}

void LOGConnection::send() {
  while (!m_over && m_session.state() != LOGRelpSession::OVER && !m_session.output().empty()) {
    const long taken = m_stream->write(m_session.output().data(), m_session.output().size());
    if (taken < 0) {
      receive();
      if (!m_over) endOfStream();
    }
    if (taken <= 0) return;
    m_session.written(static_cast<std::size_t>(taken));
  }
}

// A server that does not like the first bytes ends the connection in one of several ways. TLS knows why.
void LOGConnection::endOfStream() {
  if (m_session.state() != LOGRelpSession::OPENING || m_stream->failure().compare(0, 3, "TLS") == 0) {
    end(m_stream->failure());
  } else if (m_server.secure) {
    end("the server ended the connection instead of opening a session");
  } else {
    end("the server ended the connection instead of opening a session; perhaps it wants TLS");
  }
}

// Only answers count. A server may send hints for ever.
void LOGConnection::watchTheClock() {
  m_timedOut = Clock::now() >= m_deadline;
  if (m_timedOut) return end("the server does not answer");
  if (!m_connected || m_session.state() == LOGRelpSession::OPENING) return;
  if (m_session.unanswered().empty()) {
    m_deadline = Clock::time_point::max();
  } else if (m_session.answers() != m_answers || m_deadline == Clock::time_point::max()) {
    m_deadline = Clock::now() + LONGEST_SILENCE;
    m_answers = m_session.answers();
  }
}

void LOGConnection::end(const std::string& reason) {
  m_over = true;
  m_reason = reason;
}
