#include "log4vrk/net/internal/LOGDelivery.h"

#include <algorithm>
#include <limits>

#include "log4vrk/core/LOGLogLog.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds FIRST_DELAY{20};
constexpr std::chrono::hours LONGEST_DELAY{24};
// A connection that held so long, or carried an event, is not the same trouble as the one before.
constexpr seconds LONG_ENOUGH{5};
constexpr seconds BETWEEN_KEEPING{1};
constexpr milliseconds AFTER_FAILURE{100};
constexpr seconds LONGEST_WAIT{3600};
constexpr int ROUNDS = 32;        // of sending and receiving before the thread looks at anything else
constexpr int MOST_KEPT = 16384;  // events at once
constexpr int PATIENCE = 3;
constexpr int MOST_PATIENCE = 1 << 20;
constexpr std::size_t MOST_REASONS = 5;
constexpr const char* PREFIX = "LOGTCPSocketAppender -- ";

bool isInMemoryOnly(const LOGOutgoing& event) { return !event.kept && !event.isAnswered(); }

// Any number of milliseconds: in nanoseconds some do not fit.
LOGDelivery::Clock::duration bounded(milliseconds delay) {
  return std::clamp<milliseconds>(delay, FIRST_DELAY, LONGEST_DELAY);
}

}  // namespace

LOGDelivery::LOGDelivery(Settings settings, std::shared_ptr<LOGOutbox> outbox)
    : m_server(std::move(settings.server)),
      m_longestDelay(bounded(settings.longestDelay)),
      m_name(settings.appenderName),
      m_outbox(std::move(outbox)),
      m_wakeUp(m_outbox, &m_outbox->wakeUp()),
      m_recovery(settings.recoveryDirectory),
      m_left(settings.recoveryDirectory, PREFIX + m_name + " -- "),
      m_random(std::random_device()()),
      m_delay(FIRST_DELAY),
      m_patience(PATIENCE) {}

// Whatever raises has touched no event that is not safe elsewhere, but may have left half a frame behind.
void LOGDelivery::step() {
  try {
    work();
    publish();
  } catch (const std::exception& error) {
    failed(error.what());
  }
}

void LOGDelivery::stepOffline() {
  m_down = true;
  m_nextAttempt = Clock::time_point::max();
  step();
  m_nextAttempt = Clock::time_point();
}

// Raises nothing.
void LOGDelivery::failed(const char* why) {
  const Clock::time_point now = Clock::now();
  const bool tooLate = m_outbox->isClosed() && now >= m_outbox->farewellUntil();
  try {
    sayUnreachable(why);
    if (tooLate) giveUpTheRest();
  } catch (const std::exception&) {
    // There is no memory to say so.
  }
  drop();
  m_down = true;
  m_hurries = false;
  m_nextAttempt = now + nextDelay();
  m_nextKeeping = now + AFTER_FAILURE;
  m_finished = tooLate;
}

void LOGDelivery::work() {
  m_hurries = false;
  if (!m_opened) m_recovery.open();
  m_opened = true;
  recoverOutboxes();
  // Asked first: what was put before the closing is seen.
  m_closing = m_outbox->isClosed();
  takeEvents();
  const Clock::time_point now = Clock::now();
  if (!m_connection && (m_closing ? !m_down : now >= m_nextAttempt)) {
    m_connection = std::make_unique<LOGConnection>(m_server, m_session, m_wakeUp);
  }
  if (m_connection && !carry()) lost();
  keepWhatHasToWait();
  if (m_closing) farewell();
}

// False when the connection is over.
bool LOGDelivery::carry() {
  for (int round = 0; round < ROUNDS; ++round) {
    m_connection->step();
    collectAnswers();
    if (m_connection->isOver()) return false;
    m_hurries = m_connection->hasMore();
    if (m_session.state() != LOGRelpSession::READY) return true;
    if (!m_wasReady) sayConnected();
    if (!feed()) return true;
  }
  m_hurries = true;
  return true;
}

// True when it has given the session anything to send.
bool LOGDelivery::feed() {
  bool fed = false;
  while (m_session.hasRoom()) {
    LOGOutgoing event;
    if (!nextEvent(event)) break;
    try {
      m_session.add(std::move(event));
    } catch (...) {
      if (event.kept) m_recovery.giveBack(event.position);
      throw;
    }
    if (!m_session.unanswered().back().kept) m_outbox->pass();
    fed = true;
  }
  return fed;
}

// Memory comes after the last of the recovery files; from there only the text is taken.
bool LOGDelivery::nextEvent(LOGOutgoing& event) {
  LOGRecoveryFiles::Record record;
  if (m_recovery.next(record)) {
    event.text = std::move(record.payload);
    event.sequence = record.sequence;
    event.kept = true;
    event.position = record.position;
    return true;
  }
  LOGEncodedEvent first;
  if (!takeEvents() || !m_outbox->first(first)) return false;
  event.text = std::move(first.text);
  event.sequence = first.sequence;
  event.inMemorySince = m_takenSince;
  return true;
}

bool LOGDelivery::takeEvents() {
  if (m_outbox->hasTaken()) return true;
  if (!m_outbox->take()) return false;
  m_takenSince = Clock::now();
  return true;
}

void LOGDelivery::recoverOutboxes() {
  if (!m_hasLeft || Clock::now() < m_nextKeeping) return;
  m_hasLeft = !m_left.recover(m_recovery);
  if (m_hasLeft) m_nextKeeping = Clock::now() + BETWEEN_KEEPING;
}

void LOGDelivery::collectAnswers() {
  const std::deque<LOGOutgoing>& inFlight = m_session.unanswered();
  for (LOGOutgoing event; !inFlight.empty() && inFlight.front().isAnswered();) {
    settle(inFlight.front());
    m_session.takeAnswered(event);
    if (event.position != 0) m_recovery.acknowledge(event.position);
  }
}

void LOGDelivery::settle(const LOGOutgoing& event) {
  if (event.answer == LOGOutgoing::REFUSED) setAside(event);
  m_breaks = 0;
  if (event.answer == LOGOutgoing::REFUSED) {
    ++m_lost;
  } else {
    ++m_acknowledged;
    m_delay = FIRST_DELAY;
    m_patience = PATIENCE;
  }
}

void LOGDelivery::setAside(const LOGOutgoing& event) {
  const I18NString file = m_recovery.setAside(event.sequence, event.text);
  if (file.isEmpty() ? m_lost > 0 : file == m_saidAside) return;
  LOGLogLog::error(PREFIX + m_name + " -- the log server refuses events, which are counted and " +
                   (file.isEmpty() ? I18NString("dropped") : "set aside in " + file));
  m_saidAside = file;
}

void LOGDelivery::lost() {
  const bool asked = m_session.state() == LOGRelpSession::CLOSING ||
                     (m_session.state() == LOGRelpSession::OVER && m_session.reason().empty());
  const Clock::time_point now = Clock::now();
  if (m_wasReady && now - m_readySince >= LONG_ENOUGH) m_delay = FIRST_DELAY;
  if (!asked) {
    sayUnreachable(m_connection->reason());
    blame();
  }
  drop();
  m_down = true;
  m_nextAttempt = now + nextDelay();
  // From here on the recovery files have everything, or, when they fail, the session goes on with what it has.
  if (!keepInFlight()) return;
  for (const LOGOutgoing& event : m_session.unanswered()) {
    if (!event.kept) settle(event);  // answered, behind one that is not
  }
  m_session.forget();
  m_recovery.rewind();
  m_recovery.adopt();
  m_hasLeft = true;
}

// An event that is alone on its way whenever the server breaks the connection is why. While none is accepted in
// between, it may be the server's own trouble after all: then the next one has twice the time.
void LOGDelivery::blame() {
  if (m_connection->timedOut() || m_session.onTheirWay() != 1 || ++m_breaks < m_patience) return;
  m_patience = std::min(m_patience * 2, MOST_PATIENCE);
  m_session.refuse();
  collectAnswers();
}

// The session keeps what is unanswered.
void LOGDelivery::drop() {
  m_connection.reset();
  m_session.interrupt();
  m_wasReady = false;
}

void LOGDelivery::reconnect(LOGLogServer server, milliseconds longestDelay) {
  drop();
  m_server = std::move(server);
  m_longestDelay = bounded(longestDelay);
  m_delay = FIRST_DELAY;
  m_nextAttempt = Clock::time_point();
  m_down = false;
  m_saidReasons.clear();
}

void LOGDelivery::keepWhatHasToWait() {
  const Clock::time_point now = Clock::now();
  Clock::time_point since;
  if (!hasInMemory(since) || now < m_nextKeeping) return;
  const bool behind = m_outbox->hasTaken() && (m_outbox->isHalfFull() || m_recovery.hasMore());
  if (m_down || behind || now - since >= LONGEST_IN_MEMORY) keep();
}

// False when the recovery files have everything; otherwise since when they have not had the oldest.
bool LOGDelivery::hasInMemory(Clock::time_point& since) {
  const std::deque<LOGOutgoing>& inFlight = m_session.unanswered();
  const auto oldest = std::find_if(inFlight.begin(), inFlight.end(), &isInMemoryOnly);
  since = oldest != inFlight.end() ? oldest->inMemorySince : m_takenSince;
  return oldest != inFlight.end() || m_outbox->hasTaken();
}

// What is answered, but for its turn, counts: it may have to be set aside.
std::uint64_t LOGDelivery::oldestInMemory() {
  const std::deque<LOGOutgoing>& inFlight = m_session.unanswered();
  const auto oldest =
      std::find_if(inFlight.begin(), inFlight.end(), [](const LOGOutgoing& each) { return !each.kept; });
  return oldest != inFlight.end() ? oldest->sequence : std::numeric_limits<std::uint64_t>::max();
}

// Moves what is in memory to the recovery files, in order and as far as they take it.
bool LOGDelivery::keep() {
  if (!keepInFlight()) return false;
  const std::uint64_t oldest = oldestInMemory();
  LOGEncodedEvent event;
  for (int left = MOST_KEPT; left > 0 && takeEvents() && m_outbox->first(event); --left) {
    if (!m_recovery.append(event.sequence, event.text)) return cannotKeep();
    m_outbox->pass();
    m_outbox->release(oldest);
  }
  return true;
}

// Usually the recovery files have been read to their end when events are in flight from memory: then the session need
// not see again what is appended. If they have more, such as what another process has left meanwhile, or if that is
// behind the events in the session already, then what is appended now is sent a second time when its turn comes: events
// are acknowledged in the order of the session.
bool LOGDelivery::keepInFlight() {
  std::deque<LOGOutgoing>& inFlight = m_session.unanswered();
  const auto behind =
      std::find_if(inFlight.rbegin(), inFlight.rend(), [](const LOGOutgoing& each) { return each.position != 0; });
  auto ahead = inFlight.rend() - behind;  // of these some are from files
  for (LOGOutgoing& event : inFlight) {
    const bool again = ahead-- > 0;
    if (!isInMemoryOnly(event)) continue;
    if (again ? !m_recovery.append(event.sequence, event.text)
              : !m_recovery.appendTaken(event.sequence, event.text, event.position)) {
      return cannotKeep();
    }
    event.kept = true;
  }
  return true;
}

bool LOGDelivery::cannotKeep() {
  m_nextKeeping = Clock::now() + BETWEEN_KEEPING;
  m_outbox->moves = false;
  return false;
}

// Waits until everything is acknowledged, or until it is clear that this takes too long.
void LOGDelivery::farewell() {
  const bool done = !m_outbox->hasTaken() && m_session.unanswered().empty();
  if (m_down || Clock::now() >= m_outbox->farewellUntil() || (done && m_session.state() < LOGRelpSession::READY)) {
    bool kept = keep();
    while (kept && takeEvents()) kept = keep();
    if (!kept) giveUpTheRest();
    m_finished = true;
  } else if (done && m_session.state() == LOGRelpSession::READY) {
    m_session.close();
    m_connection->step();
  }
}

void LOGDelivery::giveUpTheRest() {
  const std::uint64_t left = m_outbox->giveUp();
  if (left == 0) return;
  LOGLogLog::error(PREFIX + m_name + " -- closed with events that could neither be sent nor kept: " +
                   std::to_string(left).c_str() + m_outbox->whereLeft());
}

void LOGDelivery::publish() {
  m_outbox->sent = m_session.sent();
  // In this order: whoever reads them in the other one counts no event twice.
  m_outbox->inRecovery = m_recovery.pending();
  m_outbox->acknowledged = m_acknowledged;
  const std::uint64_t dropped = m_lost + m_recovery.dropped();
  m_outbox->dropped += dropped - m_dropped;
  m_dropped = dropped;
  m_outbox->release(oldestInMemory());
}

void LOGDelivery::sayConnected() {
  const I18NString line = PREFIX + m_name + " -- connected to the log server " + m_server.name().c_str();
  if (m_down) {
    LOGLogLog::warn(line);
  } else {
    LOGLogLog::debug(line);
  }
  m_wasReady = true;
  m_down = false;
  m_readySince = Clock::now();
  m_saidReasons.clear();
}

void LOGDelivery::sayUnreachable(const std::string& reason) {
  if (m_saidReasons.size() == MOST_REASONS) return;
  if (std::find(m_saidReasons.begin(), m_saidReasons.end(), reason) != m_saidReasons.end()) return;
  m_saidReasons.push_back(reason);
  LOGLogLog::error(PREFIX + m_name + (m_wasReady ? " -- lost" : " -- there is no") +
                   (m_wasReady ? " the connection to the log server " : " connection to the log server ") +
                   m_server.name().c_str() + ", events are kept: " + reason.c_str());
}

LOGDelivery::Clock::duration LOGDelivery::nextDelay() {
  const Clock::duration delay = std::min(m_delay, m_longestDelay);
  m_delay = std::min(delay * 2, m_longestDelay);
  // Not all clients of a server that comes back at once.
  return delay / 2 + Clock::duration(std::uniform_int_distribution<Clock::rep>(0, (delay / 2).count())(m_random));
}

void LOGDelivery::wait() {
  if (m_finished || m_hurries) return;
  Clock::time_point until = m_connection ? m_connection->deadline() : m_nextAttempt;
  Clock::time_point since;
  if (m_hasLeft) until = std::min(until, m_nextKeeping);
  if (hasInMemory(since)) until = std::min(until, std::max(since + LONGEST_IN_MEMORY, m_nextKeeping));
  if (m_closing) until = std::min(until, m_outbox->farewellUntil());
  const Clock::duration left = std::clamp<Clock::duration>(until - Clock::now(), Clock::duration(0), LONGEST_WAIT);
  const long milliseconds = static_cast<long>(std::chrono::ceil<std::chrono::milliseconds>(left).count());
  m_wakeUp->wait(m_connection ? m_connection->descriptor() : -1, m_connection && m_connection->hasToWrite(),
                 milliseconds);
}

void LOGDelivery::close() {
  m_connection.reset();
  m_recovery.close();
  m_outbox->end();
}

void LOGDelivery::abandon() {
  m_connection.reset();
  m_recovery.abandon();
}
