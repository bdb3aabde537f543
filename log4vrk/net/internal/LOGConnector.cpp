#include "log4vrk/net/internal/LOGConnector.h"

#include <algorithm>
#include <vector>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGExitSteps.h"
#include "log4vrk/core/internal/LOGTimeLimit.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKFork.h"

namespace {

// How long close() waits for a thread that should long have ended.
constexpr std::chrono::seconds GRACE{2};
// How much of the time before an exit is left for writing files.
constexpr int FILES_SHARE = 4;
constexpr const char* PREFIX = "LOGTCPSocketAppender -- ";

}  // namespace

// All connectors of the process, for its exit and for the child of a fork.
struct LOGConnector::Registry {
  static Registry& instance() {
    static Registry& registry = vrkImmortal<Registry>();
    return registry;
  }
  void add(LOGConnector* connector) {
    const LOGLeafGuard guard(mutex);
    connectors.push_back(connector);
    if (finished) connector->m_outbox->close(Clock::time_point());
  }
  void remove(LOGConnector* connector) {
    const LOGLeafGuard guard(mutex);
    connectors.erase(std::remove(connectors.begin(), connectors.end(), connector), connectors.end());
  }
  // From now on there are no others.
  std::vector<std::shared_ptr<LOGConnector>> finish() {
    std::vector<std::shared_ptr<LOGConnector>> all;
    const LOGLeafGuard guard(mutex);
    finished = true;
    for (LOGConnector* const each : connectors) {
      if (std::shared_ptr<LOGConnector> connector = each->weak_from_this().lock()) all.push_back(std::move(connector));
    }
    return all;
  }
  // There is no other thread.
  static void abandonInChild() VRK_NO_THREAD_SAFETY_ANALYSIS {
    for (LOGConnector* const each : instance().connectors) each->abandonInChild();
    instance().connectors.clear();
  }

  VRKMutex mutex;
  std::vector<LOGConnector*> connectors VRK_GUARDED_BY(mutex);
  bool finished VRK_GUARDED_BY(mutex) = false;
  const bool forkHandled = (vrkAtFork(nullptr, nullptr, &abandonInChild), true);
  const bool finishesAtExit = LOGExitSteps::set(LOGExitSteps::CONNECTIONS, &LOGConnector::finishAll);
};

std::shared_ptr<LOGConnector> LOGConnector::make(LOGDelivery::Settings settings, std::shared_ptr<LOGOutbox> outbox) {
  std::shared_ptr<LOGConnector> connector(new LOGConnector(std::move(settings), std::move(outbox)));
  Registry::instance().add(connector.get());
  return connector;
}

LOGConnector::LOGConnector(LOGDelivery::Settings settings, std::shared_ptr<LOGOutbox> outbox)
    : m_name(settings.appenderName),
      m_outbox(outbox),
      m_forks(VRKThread::forks()),
      m_delivery(std::move(settings), std::move(outbox)) {}

LOGConnector::~LOGConnector() {
  join();
  Registry::instance().remove(this);
}

// What a thread at rest leaves behind is whole. One that a fork has caught in the middle is left as it is.
void LOGConnector::abandonInChild() {
  if (m_working) return;
  m_delivery.abandon();
}

bool LOGConnector::startOrKeep() {
  const LOGGuard guard(*this);
  if (m_started) return true;
  try {
    m_self = shared_from_this();
    start();
    m_started = true;
    m_lacksThread = false;
    return true;
  } catch (const std::exception& error) {
    m_self.reset();
    if (!m_lacksThread) {
      LOGLogLog::error(PREFIX + m_name + " -- there is no thread to send with, events are kept: " + error.what());
    }
    m_lacksThread = true;
  }
  m_delivery.stepOffline();
  return false;
}

void LOGConnector::reconnect(LOGLogServer server, std::chrono::milliseconds longestDelay) {
  auto changed = std::make_unique<LOGLogServer>(std::move(server));
  {
    const LOGLeafGuard guard(m_changeMutex);
    m_newServer.swap(changed);
    m_newDelay = longestDelay;
  }
  m_outbox->wakeUp().wake();
}

void LOGConnector::beginToFinish(Clock::time_point farewellUntil) {
  m_outbox->close(farewellUntil);
  const LOGGuard guard(*this);
  if (m_started) return;
  while (!m_delivery.isFinished()) m_delivery.stepOffline();
  m_delivery.close();
  m_outbox->ended().stop();
}

void LOGConnector::waitForEnd(Clock::time_point until) {
  const auto left = std::chrono::duration_cast<std::chrono::microseconds>(until - Clock::now());
  if (m_outbox->ended().wait(std::max<long long>(left.count(), 0))) {
    join();  // it has nothing left to do but to end
    return;
  }
  const std::string inMemory = std::to_string(m_outbox->giveUp());
  LOGLogLog::error(PREFIX + m_name + " -- closed without waiting any longer for its thread; events in its memory: " +
                   inMemory.c_str() + m_outbox->whereLeft());
}

// In a child nobody runs any more what the thread had.
void LOGConnector::close(std::shared_ptr<LOGConnector> given) {
  const std::shared_ptr<LOGConnector> connector = std::move(given);
  if (connector->m_forks != VRKThread::forks()) {
    if (!connector->m_working) connector->m_self.reset();
    return;
  }
  const Clock::time_point farewellUntil = LOGTimeLimit::until(LONGEST_FAREWELL);
  connector->beginToFinish(farewellUntil);
  connector->waitForEnd(farewellUntil + GRACE);
}

void LOGConnector::finishAll(Clock::time_point until) {
  const std::vector<std::shared_ptr<LOGConnector>> all = Registry::instance().finish();
  const Clock::time_point now = Clock::now();
  const Clock::time_point farewellUntil = until - std::max(until - now, Clock::duration(0)) / FILES_SHARE;
  for (const std::shared_ptr<LOGConnector>& each : all) each->beginToFinish(farewellUntil);
  for (const std::shared_ptr<LOGConnector>& each : all) each->waitForEnd(until);
}

void LOGConnector::run() {
  const LOGDeferral::DispatcherThread here;
  while (!m_delivery.isFinished()) {
    {
      // A fork waits until the thread is at rest.
      const LOGGate::Pass inside;
      m_working = true;
      std::unique_ptr<LOGLogServer> changed;
      std::chrono::milliseconds delay{0};
      {
        const LOGLeafGuard guard(m_changeMutex);
        changed.swap(m_newServer);
        delay = m_newDelay;
      }
      if (changed) m_delivery.reconnect(std::move(*changed), delay);
      m_delivery.step();
      m_working = false;
    }
    m_delivery.wait();
  }
  const LOGGate::Pass inside;
  m_delivery.close();
  m_outbox->ended().stop();
  const std::shared_ptr<LOGConnector> self = std::move(m_self);  // perhaps the last to know it
}
