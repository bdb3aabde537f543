#include "log4vrk/net/LOGTCPSocketAppender.h"

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGLayoutInternals.h"
#include "log4vrk/net/internal/LOGConnector.h"
#include "log4vrk/net/internal/LOGEventEncoder.h"
#include "log4vrk/net/internal/LOGOutbox.h"
#include "log4vrk/platform/VRKConfigurationFactory.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"
#include "log4vrk/platform/internal/VRKProcess.h"

namespace {

constexpr const char* RECOVERY_DIRECTORY = "../logs/recovery/local";
constexpr long BETWEEN_LOOKS = 200;  // microseconds

}  // namespace

LOGTCPSocketAppender::LOGTCPSocketAppender() : m_forks(VRKThread::forks()), m_outbox(vrkNew<LOGOutbox>(VRK_HERE)) {
  static const LOGAppenderInternals INTERNALS = {&typeid(LOGTCPSocketAppender), true};
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

void LOGTCPSocketAppender::activateOptions() {
  if (getClosed() == 0 && m_forks == VRKThread::forks()) return;
  logContain("LOGTCPSocketAppender::activateOptions -- ", [&] {
    const LOGGuard guard(*this);
    if (m_wasClosed || (getClosed() == 0 && m_forks == VRKThread::forks())) return;
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
  LOGConnector::Settings settings;
  settings.server.host = m_remoteHost.toUtf8();
  settings.server.port = m_port;
  settings.server.secure = m_secure != 0;
  settings.server.tls = {m_authorities.toUtf8(), m_certificate.toUtf8(), m_key.toUtf8()};
  settings.longestDelay = std::chrono::milliseconds(m_reconnectionDelay);
  settings.recoveryDirectory = VRKConfigurationFactory::getInstance().resolvePath(RECOVERY_DIRECTORY);
  settings.appenderName = "[" + getName() + "]";
  auto connector = std::make_unique<LOGConnector>(std::move(settings), m_outbox);
  connector->start();
  m_connector = std::move(connector);
  m_forks = VRKThread::forks();
  setClosed(0);
}

void LOGTCPSocketAppender::append(LOGLoggingEvent* event) {
  VRK_ASSERT(event);
  if (getClosed() != 0 || m_forks != VRKThread::forks()) activateOptions();
  if (getClosed() != 0) {
    reportClosed();
    return;
  }
  put(event);
}

void LOGTCPSocketAppender::put(LOGLoggingEvent* event) {
  LOGEncodedEvent encoded = m_encoder->encode(*event, render(event), m_locationInfo != 0);
  LOGOutbox::Result result = m_outbox->put(encoded);
  if (result == LOGOutbox::FULL && waitForSpace(*m_outbox)) result = m_outbox->put(encoded);
  if (result == LOGOutbox::CLOSED) reportClosed();
  if (result != LOGOutbox::FULL) return;
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

// True when there is space. The wait is for the sending thread to come round; one that does not is not waited for again
// until it has.
bool LOGTCPSocketAppender::waitForSpace(LOGOutbox& outbox) {
  for (long waited = 0; waited < LONGEST_WAIT_FOR_SPACE * 1000; waited += BETWEEN_LOOKS) {
    if (!outbox.isFull()) return true;
    if (!outbox.moves || LOGDeferral::mustNotWait()) return false;
    VRKThread::sleep(BETWEEN_LOOKS);
  }
  outbox.moves = false;
  return false;
}

// No lock is held while the thread finishes.
void LOGTCPSocketAppender::close() {
  logContain("LOGTCPSocketAppender::close -- ", [&] {
    std::unique_ptr<LOGConnector> connector;
    {
      const LOGGuard guard(*this);
      m_wasClosed = true;
      setClosed(1);
      connector = std::move(m_connector);
    }
    if (connector) LOGConnector::close(std::move(connector));
  });
}

void LOGTCPSocketAppender::setRemoteHost(const I18NString& host) {
  const LOGGuard guard(*this);
  m_remoteHost = host;
}

I18NString LOGTCPSocketAppender::getRemoteHost() const {
  const LOGGuard guard(*this);
  return m_remoteHost;
}

void LOGTCPSocketAppender::setAuthorities(const I18NString& file) {
  const LOGGuard guard(*this);
  m_authorities = file;
}

void LOGTCPSocketAppender::setCertificate(const I18NString& certificateFile, const I18NString& keyFile) {
  const LOGGuard guard(*this);
  m_certificate = certificateFile;
  m_key = keyFile;
}

std::uint64_t LOGTCPSocketAppender::getSent() const { return m_outbox->sent; }
std::uint64_t LOGTCPSocketAppender::getAcknowledged() const { return m_outbox->acknowledged; }
std::uint64_t LOGTCPSocketAppender::getInRecovery() const { return m_outbox->inRecovery; }
std::uint64_t LOGTCPSocketAppender::getDropped() const { return m_outbox->dropped; }
