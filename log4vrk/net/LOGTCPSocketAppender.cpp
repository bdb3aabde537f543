#include "log4vrk/net/LOGTCPSocketAppender.h"

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGLayoutInternals.h"
#include "log4vrk/core/internal/LOGTaking.h"
#include "log4vrk/core/internal/LOGTimeLimit.h"
#include "log4vrk/core/internal/LOGWaiting.h"
#include "log4vrk/net/internal/LOGConnector.h"
#include "log4vrk/net/internal/LOGEventEncoder.h"
#include "log4vrk/net/internal/LOGOutbox.h"
#include "log4vrk/net/internal/LOGOutboxFiles.h"
#include "log4vrk/platform/VRKConfigurationFactory.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"
#include "log4vrk/platform/internal/VRKProcess.h"

namespace {

constexpr const char* RECOVERY_DIRECTORY = "../logs/recovery/local";
constexpr long BETWEEN_LOOKS = 200;  // microseconds
constexpr std::chrono::milliseconds BETWEEN_STARTS{100};

// The wait is for the sending thread to come round; one that does not is not waited for again until it has.
LOGOutbox::Result putWhenThereIsSpace(LOGOutbox& outbox, const LOGEncodedEvent& event) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds LONGEST_WAIT{LOGTCPSocketAppender::LONGEST_WAIT_FOR_SPACE};
  const Clock::time_point until = Clock::now() + LONGEST_WAIT;
  do {
    if (!outbox.moves || LOGDeferral::mustNotWait()) return LOGOutbox::FULL;
    VRKThread::sleep(BETWEEN_LOOKS);
    const LOGOutbox::Result result = outbox.put(event);
    if (result != LOGOutbox::FULL) return result;
  } while (Clock::now() < until);
  outbox.moves = false;
  return LOGOutbox::FULL;
}

}  // namespace

LOGTCPSocketAppender::LOGTCPSocketAppender() : m_forks(VRKThread::forks()), m_outbox(vrkNew<LOGOutbox>(VRK_HERE)) {
  // Until the server has acknowledged everything or the recovery files have it, so that nothing is left to do when the
  // appender is closed. What is appended meanwhile may delay that up to the limit.
  const auto drain = [](LOGAppenderSkeleton& appender) {
    auto& self = static_cast<LOGTCPSocketAppender&>(appender);
    if (!self.isActive()) return true;
    logWaitUntil(LOGTimeLimit::until(LOGConnector::LONGEST_FAREWELL), [&] { return self.m_outbox->inMemory() == 0; });
    return true;
  };
  static const LOGAppenderInternals INTERNALS = {&typeid(LOGTCPSocketAppender), true, nullptr, nullptr, nullptr, drain};
  instance("LOGTCPSocketAppender");
  LOGAppenderInternals::set(*this, INTERNALS);
  setClosed(1);
}

LOGTCPSocketAppender::~LOGTCPSocketAppender() {
  const VRKNoCancellation finished;
  try {
    LOGTCPSocketAppender::close();
  } catch (...) {
    // close() has written its line.
  }
}

bool LOGTCPSocketAppender::isActive() const {
  return getClosed() == 0 && m_forks == VRKThread::forks() && !m_lacksThread;
}

void LOGTCPSocketAppender::activateOptions() {
  if (isActive()) return;
  logContain("LOGTCPSocketAppender::activateOptions -- ", [&] {
    const LOGGuard guard(*this);
    if (m_wasClosed || isActive()) return;
    if (getClosed() == 0 && m_forks == VRKThread::forks()) return tryThread();
    if (!m_remoteHost.isEmpty()) return start();
    if (!m_hostMissed) LOGLogLog::error("No remote host for the TCP socket appender named [" + getName() + "].");
    m_hostMissed = true;
  });
}

// In a forked child the thread is the parent's, and so is what is queued.
void LOGTCPSocketAppender::start() {
  if (m_forks != VRKThread::forks()) {
    if (m_connector) LOGConnector::close(std::move(m_connector));
    m_outbox = std::make_shared<LOGOutbox>();
  }
  m_encoder = std::make_unique<LOGEventEncoder>(VRKProcess::hostName(), VRKProcess::programName(), VRKProcess::id());
  LOGDelivery::Settings settings;
  settings.server = server();
  settings.longestDelay = std::chrono::milliseconds(m_reconnectionDelay);
  settings.recoveryDirectory = VRKConfigurationFactory::getInstance().resolvePath(RECOVERY_DIRECTORY);
  settings.appenderName = "[" + getName() + "]";
  if (!m_outbox->isUsable()) {
    const LOGOutboxFiles files(settings.recoveryDirectory, "LOGTCPSocketAppender -- " + settings.appenderName + " -- ");
    m_outbox->use(files.make(LOGOutbox::MOST_BYTES));
  }
  m_connector = LOGConnector::make(std::move(settings), m_outbox);
  m_forks = VRKThread::forks();
  m_nextStart = {};
  tryThread();
  setClosed(0);
}

void LOGTCPSocketAppender::tryThread() {
  const auto now = std::chrono::steady_clock::now();
  if (now < m_nextStart) return;
  m_nextStart = now + BETWEEN_STARTS;
  m_lacksThread = !m_connector->startOrKeep();
}

LOGLogServer LOGTCPSocketAppender::server() const {
  LOGLogServer server;
  server.host = m_remoteHost.toUtf8();
  server.port = m_port;
  server.secure = m_secure != 0;
  server.tls = {m_authorities.toUtf8(), m_certificate.first.toUtf8(), m_certificate.second.toUtf8()};
  return server;
}

void LOGTCPSocketAppender::append(LOGLoggingEvent* event) {
  VRK_ASSERT(event);
  if (getClosed() != 0 || m_forks != VRKThread::forks()) activateOptions();
  // A child that could not be activated must not touch what it shares with its parent.
  if (getClosed() != 0 || m_forks != VRKThread::forks()) {
    reportClosed();
    return;
  }
  put(event);
}

void LOGTCPSocketAppender::put(LOGLoggingEvent* event) {
  const LOGEncodedEvent encoded = m_encoder->encode(*event, render(event), m_locationInfo != 0);
  LOGOutbox::Result result = m_outbox->put(encoded);
  if (result == LOGOutbox::FULL) result = putWhenThereIsSpace(*m_outbox, encoded);
  if (result == LOGOutbox::CLOSED) reportClosed();
  if (result != LOGOutbox::FULL) return;
  LOGTaking::refuse();
  ++m_outbox->dropped;
  if (!m_fullSaid.exchange(true)) {
    LOGLogLog::error("LOGTCPSocketAppender -- [" + getName() +
                     "] -- the queue is full, events are dropped and counted");
  }
}

std::string LOGTCPSocketAppender::render(LOGLoggingEvent* event) {
  if (LOGLayout* const layout = getLayout()) {
    const LOGGuard guard(*layout);
    return std::string(LOGLayoutInternals::formatUtf8(*layout, event));
  }
  const std::unique_ptr<I18NString> message(event->getRenderedMessage());
  return message ? message->toUtf8() : std::string();
}

// No lock is held while the thread finishes.
void LOGTCPSocketAppender::close() {
  logContain("LOGTCPSocketAppender::close -- ", [&] {
    std::shared_ptr<LOGConnector> connector;
    {
      const LOGGuard guard(*this);
      m_wasClosed = true;
      setClosed(1);
      connector = std::move(m_connector);
    }
    if (connector) LOGConnector::close(std::move(connector));
  });
}

// What is set already, as by a program that sets it again, costs no connection.
template <typename Setting, typename Value>
void LOGTCPSocketAppender::change(Setting& setting, const Value& value) {
  if (setting == value) return;
  setting = value;
  if (m_connector && m_forks == VRKThread::forks()) {
    m_connector->reconnect(server(), std::chrono::milliseconds(m_reconnectionDelay));
  }
}

void LOGTCPSocketAppender::setRemoteHost(const I18NString& host) {
  const LOGGuard guard(*this);
  change(m_remoteHost, host);
}

I18NString LOGTCPSocketAppender::getRemoteHost() const {
  const LOGGuard guard(*this);
  return m_remoteHost;
}

void LOGTCPSocketAppender::setPort(long port) {
  const LOGGuard guard(*this);
  change(m_port, port);
}

void LOGTCPSocketAppender::setSecure(int on) {
  const LOGGuard guard(*this);
  change(m_secure, on);
}

void LOGTCPSocketAppender::setReconnectionDelay(long milliseconds) {
  const LOGGuard guard(*this);
  change(m_reconnectionDelay, milliseconds);
}

void LOGTCPSocketAppender::setAuthorities(const I18NString& file) {
  const LOGGuard guard(*this);
  change(m_authorities, VRKProcess::absolutePath(file));
}

void LOGTCPSocketAppender::setCertificate(const I18NString& certificateFile, const I18NString& keyFile) {
  const LOGGuard guard(*this);
  change(m_certificate, std::make_pair(VRKProcess::absolutePath(certificateFile), VRKProcess::absolutePath(keyFile)));
}

std::uint64_t LOGTCPSocketAppender::getSent() const { return m_outbox->sent; }
std::uint64_t LOGTCPSocketAppender::getAcknowledged() const { return m_outbox->acknowledged; }
std::uint64_t LOGTCPSocketAppender::getInRecovery() const { return m_outbox->inRecovery; }
std::uint64_t LOGTCPSocketAppender::getDropped() const { return m_outbox->dropped; }
