#include "log4vrk/net/internal/LOGConnector.h"

#include <algorithm>
#include <cstdio>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/platform/internal/VRKFork.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds FIRST_DELAY{20};
// A connection that held so long, or carried an event, is not the same trouble as the one before.
constexpr seconds LONG_ENOUGH{5};
constexpr seconds BETWEEN_KEEPING{1};
constexpr milliseconds AFTER_FAILURE{100};
constexpr seconds LONGEST_WAIT{3600};
// How long close() waits for a thread that should long have ended.
constexpr seconds GRACE{2};
constexpr int ROUNDS = 32;  // of sending and receiving before the thread looks at anything else
constexpr std::size_t MOST_REASONS = 5;
constexpr const char* PREFIX = "LOGTCPSocketAppender -- ";

std::string newStream() {
  std::random_device random;
  char text[20];
  std::snprintf(text, sizeof text, "%08x%08x", random(), random());
  return text;
}

bool isInMemoryOnly(const LOGOutgoing& event) { return !event.kept && !event.isAnswered(); }

}  // namespace

// All connectors of the process, for the child of a fork.
struct LOGConnector::Registry {
  static Registry& instance() {
    static Registry& registry = vrkImmortal<Registry>();
    return registry;
  }
  void add(LOGConnector* connector) {
    const LOGLeafGuard guard(mutex);
    connectors.push_back(connector);
  }
  void remove(LOGConnector* connector) {
    const LOGLeafGuard guard(mutex);
    connectors.erase(std::remove(connectors.begin(), connectors.end(), connector), connectors.end());
  }
  // There is no other thread.
  static void abandonInChild() VRK_NO_THREAD_SAFETY_ANALYSIS {
    for (LOGConnector* const each : instance().connectors) each->abandonInChild();
    instance().connectors.clear();
  }

  VRKMutex mutex;
  std::vector<LOGConnector*> connectors VRK_GUARDED_BY(mutex);
  const bool forkHandled = (vrkAtFork(nullptr, nullptr, &abandonInChild), true);
};

LOGConnector::LOGConnector(Settings settings, std::shared_ptr<LOGOutbox> outbox)
    : m_settings(std::move(settings)),
      m_outbox(std::move(outbox)),
      m_wakeUp(m_outbox, &m_outbox->wakeUp()),
      m_stream(newStream()),
      m_forks(VRKThread::forks()),
      m_recovery(m_settings.recoveryDirectory),
      m_random(std::random_device()()),
      m_delay(FIRST_DELAY) {
  Registry::instance().add(this);
}

LOGConnector::~LOGConnector() {
  join();
  Registry::instance().remove(this);
}

// What a thread at rest leaves behind is whole. One that a fork has caught in the middle is left as it is.
void LOGConnector::abandonInChild() {
  if (m_working) return;
  m_connection.reset();
  m_recovery.abandon();
}

void LOGConnector::close(std::unique_ptr<LOGConnector> connector) {
  if (connector->m_forks != VRKThread::forks()) {
    if (connector->m_working) static_cast<void>(connector.release());
    return;
  }
  connector->m_outbox->close();
  constexpr auto LIMIT = std::chrono::duration_cast<std::chrono::microseconds>(LONGEST_FAREWELL + GRACE);
  if (connector->m_ended.wait(LIMIT.count()) || connector->m_life.exchange(LEFT) == ENDED) return;
  LOGLogLog::error(PREFIX + connector->m_settings.appenderName +
                   " -- closed without waiting any longer for its thread");
  static_cast<void>(connector.release());
}

void LOGConnector::run() {
  const LOGDeferral::DispatcherThread here;
  bool opened = false, failed = false;
  while (!m_finished) {
    {
      // A fork waits until the thread is at rest.
      const LOGGate::Pass inside;
      m_working = true;
      const bool worked = logContainAll({PREFIX, PREFIX, PREFIX}, false, [&] {
        if (!opened) m_recovery.open();
        opened = true;
        work();
        return true;
      });
      if (!worked && m_outbox->isClosed()) m_finished = true;
      m_working = false;
      failed = !worked;
    }
    if (failed) {
      m_wakeUp->wait(-1, false, AFTER_FAILURE.count());
    } else {
      wait();
    }
  }
  {
    const LOGGate::Pass inside;
    m_connection.reset();
    m_recovery.close();
  }
  if (m_life.exchange(ENDED) == LEFT) {
    delete this;
  } else {
    m_ended.stop();
  }
}

void LOGConnector::work() {
  m_hurries = false;
  // Asked first: what was put before the closing is seen.
  m_closing = m_outbox->isClosed();
  takeEvents();
  const Clock::time_point now = Clock::now();
  if (!m_connection && (m_closing ? !m_down : now >= m_nextAttempt)) {
    m_nextAttempt = now + AFTER_FAILURE;  // should this one raise
    m_connection = std::make_unique<LOGConnection>(m_settings.server, m_session, m_wakeUp);
  }
  if (m_connection && !carry()) lost();
  keepWhatHasToWait();
  if (m_closing) farewell();
  publish();
}

// False when the connection is over.
bool LOGConnector::carry() {
  for (int round = 0; round < ROUNDS; ++round) {
    m_connection->step();
    collectAnswers();
    if (m_connection->isOver()) return false;
    if (m_session.state() != LOGRelpSession::READY) return true;
    if (!m_wasReady) sayConnected();
    if (!feed()) return true;
  }
  m_hurries = true;
  return true;
}

// True when it has given the session anything to send. Memory comes after the last of the recovery files.
bool LOGConnector::feed() {
  bool fed = false;
  while (m_session.hasRoom()) {
    LOGOutgoing event;
    LOGRecoveryFiles::Record record;
    if (m_recovery.next(record)) {
      event.text = std::move(record.payload);
      event.sequence = record.sequence;
      event.kept = true;
      event.position = record.position;
    } else if (takeEvents()) {
      event = std::move(m_taken.front());
      m_taken.pop_front();
    } else {
      break;
    }
    m_session.add(std::move(event));
    fed = true;
  }
  return fed;
}

bool LOGConnector::takeEvents() {
  if (!m_taken.empty()) return true;
  const Clock::time_point now = Clock::now();
  for (LOGEncodedEvent& event : m_outbox->takeAll()) {
    LOGOutgoing outgoing;
    outgoing.sequence = event.sequence;
    outgoing.inMemorySince = now;
    outgoing.text = LOGEventEncoder::stamped(std::move(event), m_stream);
    m_taken.push_back(std::move(outgoing));
  }
  if (m_taken.empty()) return false;
  m_outbox->moves = true;
  return true;
}

void LOGConnector::collectAnswers() {
  LOGOutgoing event;
  while (m_session.takeAnswered(event)) {
    if (event.answer == LOGOutgoing::ACCEPTED) {
      ++m_acknowledged;
      m_delay = FIRST_DELAY;
    } else {
      ++m_lost;
      if (!m_refusalSaid) {
        LOGLogLog::error(PREFIX + m_settings.appenderName +
                         " -- the log server refuses events, which are dropped and counted");
      }
      m_refusalSaid = true;
    }
    if (event.position != 0) m_recovery.acknowledge(event.position);
  }
}

void LOGConnector::lost() {
  const bool asked = m_session.state() == LOGRelpSession::CLOSING ||
                     (m_session.state() == LOGRelpSession::OVER && m_session.reason().empty());
  const Clock::time_point now = Clock::now();
  if (m_wasReady && now - m_readySince >= LONG_ENOUGH) m_delay = FIRST_DELAY;
  if (!asked) sayUnreachable(m_connection->reason());
  m_connection.reset();
  m_session.interrupt();
  m_wasReady = false;
  m_down = true;
  m_nextAttempt = now + nextDelay();
  // From here on the recovery files have everything, or, when they fail, the session goes on with what it has.
  if (!keepInFlight()) return;
  m_session.forget();
  m_recovery.rewind();
  m_recovery.adopt();
}

void LOGConnector::keepWhatHasToWait() {
  const LOGOutgoing* const oldest = oldestInMemory();
  const Clock::time_point now = Clock::now();
  if (oldest == nullptr || now < m_nextKeeping) return;
  const bool behind = !m_taken.empty() && (m_outbox->isHalfFull() || hasMoreInFiles());
  if (m_down || behind || now - oldest->inMemorySince >= LONGEST_IN_MEMORY) keep();
}

// Null when the recovery files have everything.
const LOGOutgoing* LOGConnector::oldestInMemory() {
  const std::deque<LOGOutgoing>& inFlight = m_session.unanswered();
  const auto oldest = std::find_if(inFlight.begin(), inFlight.end(), &isInMemoryOnly);
  if (oldest != inFlight.end()) return &*oldest;
  return m_taken.empty() ? nullptr : &m_taken.front();
}

// Whether the recovery files have events that the session has not.
bool LOGConnector::hasMoreInFiles() {
  const std::deque<LOGOutgoing>& inFlight = m_session.unanswered();
  const auto known =
      std::count_if(inFlight.begin(), inFlight.end(), [](const LOGOutgoing& each) { return each.position != 0; });
  return m_recovery.pending() > static_cast<std::uint64_t>(known);
}

// Moves what is in memory to the recovery files, in order and as far as they take it.
bool LOGConnector::keep() {
  if (!keepInFlight()) return false;
  for (std::size_t left = LOGOutbox::MOST_EVENTS; left > 0 && takeEvents(); --left) {
    const LOGOutgoing& event = m_taken.front();
    if (!m_recovery.append(event.sequence, event.text)) return cannotKeep();
    m_taken.pop_front();
  }
  return true;
}

// Usually the recovery files have been read to their end when events are in flight from memory. Then what is appended
// is what is read next, and the session need not see it again. If they have more, such as what another process has left
// meanwhile, then what is appended now is sent a second time when its turn comes.
bool LOGConnector::keepInFlight() {
  std::deque<LOGOutgoing>& inFlight = m_session.unanswered();
  const bool readToTheEnd = !hasMoreInFiles();
  for (LOGOutgoing& event : inFlight) {
    if (!isInMemoryOnly(event)) continue;
    if (!m_recovery.append(event.sequence, event.text)) return cannotKeep();
    event.kept = true;
    LOGRecoveryFiles::Record record;
    if (readToTheEnd && m_recovery.next(record)) event.position = record.position;
  }
  return true;
}

bool LOGConnector::cannotKeep() {
  m_nextKeeping = Clock::now() + BETWEEN_KEEPING;
  m_outbox->moves = false;
  return false;
}

// Waits until everything is acknowledged, or until it is clear that this takes too long.
void LOGConnector::farewell() {
  const Clock::time_point now = Clock::now();
  if (m_farewellUntil == Clock::time_point()) m_farewellUntil = now + LONGEST_FAREWELL;
  const bool done = m_taken.empty() && m_session.unanswered().empty();
  if (m_down || now >= m_farewellUntil || (done && m_session.state() < LOGRelpSession::READY)) {
    if (!keep()) giveUpTheRest();
    m_finished = true;
  } else if (done && m_session.state() == LOGRelpSession::READY) {
    m_session.close();
    m_connection->step();
  }
}

void LOGConnector::giveUpTheRest() {
  const std::deque<LOGOutgoing>& inFlight = m_session.unanswered();
  std::uint64_t lost = static_cast<std::uint64_t>(std::count_if(inFlight.begin(), inFlight.end(), &isInMemoryOnly));
  while (takeEvents()) {
    lost += m_taken.size();
    m_taken.clear();
  }
  if (lost == 0) return;
  m_lost += lost;
  LOGLogLog::error(PREFIX + m_settings.appenderName +
                   " -- closed with events that could neither be sent nor kept: " + std::to_string(lost).c_str());
}

void LOGConnector::publish() {
  m_outbox->sent = m_session.sent();
  // In this order: whoever reads them in the other one counts no event twice.
  m_outbox->inRecovery = m_recovery.pending();
  m_outbox->acknowledged = m_acknowledged;
  const std::uint64_t dropped = m_lost + m_recovery.dropped();
  m_outbox->dropped += dropped - m_dropped;
  m_dropped = dropped;
}

void LOGConnector::sayConnected() {
  const I18NString line =
      PREFIX + m_settings.appenderName + " -- connected to the log server " + m_settings.server.name().c_str();
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

void LOGConnector::sayUnreachable(const std::string& reason) {
  if (m_saidReasons.size() == MOST_REASONS) return;
  if (std::find(m_saidReasons.begin(), m_saidReasons.end(), reason) != m_saidReasons.end()) return;
  m_saidReasons.push_back(reason);
  LOGLogLog::error(PREFIX + m_settings.appenderName + (m_wasReady ? " -- lost" : " -- there is no") +
                   (m_wasReady ? " the connection to the log server " : " connection to the log server ") +
                   m_settings.server.name().c_str() + ", events are kept: " + reason.c_str());
}

LOGConnector::Clock::duration LOGConnector::nextDelay() {
  const Clock::duration longest = std::max(m_settings.longestDelay, FIRST_DELAY);
  const Clock::duration delay = std::min(m_delay, longest);
  m_delay = std::min(delay * 2, longest);
  // Not all clients of a server that comes back at once.
  return delay / 2 + Clock::duration(std::uniform_int_distribution<Clock::rep>(0, (delay / 2).count())(m_random));
}

void LOGConnector::wait() {
  if (m_finished || m_hurries) return;
  Clock::time_point until = m_connection ? m_connection->deadline() : m_nextAttempt;
  if (const LOGOutgoing* const oldest = oldestInMemory()) {
    until = std::min(until, std::max(oldest->inMemorySince + LONGEST_IN_MEMORY, m_nextKeeping));
  }
  if (m_closing) until = std::min(until, m_farewellUntil);
  const Clock::duration left = std::clamp<Clock::duration>(until - Clock::now(), Clock::duration(0), LONGEST_WAIT);
  const long milliseconds = static_cast<long>(std::chrono::ceil<std::chrono::milliseconds>(left).count());
  m_wakeUp->wait(m_connection ? m_connection->descriptor() : -1, m_connection && m_connection->hasToWrite(),
                 milliseconds);
}
