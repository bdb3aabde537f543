#include "log4vrk/appenders/internal/LOGRingDispatcher.h"

#include <utility>

#include "log4vrk/appenders/internal/LOGQueueThread.h"
#include "log4vrk/appenders/internal/LOGRingFiles.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/platform/internal/VRKProcess.h"
#include "log4vrk/platform/internal/VRKStackSize.h"

LOGRingDispatcher::LOGRingDispatcher(std::shared_ptr<LOGRing> ring,
                                     std::shared_ptr<LOGAppenderAttachableImpl> container, std::string name,
                                     std::vector<I18NString> directories)
    : VRKThread(VRK_STACK_SIZE),
      m_ring(std::move(ring)),
      m_name(std::move(name)),
      m_reporter("LOGDurableAsyncAppender -- [" + m_name + "] -- "),
      m_directories(std::move(directories)),
      m_delivery(std::move(container)) {}

LOGRingDispatcher::~LOGRingDispatcher() { join(); }

void LOGRingDispatcher::close() {
  m_interrupted = 1;
  join();
}

void LOGRingDispatcher::closeItself() {
  m_deletesItself = true;
  m_interrupted = 1;
}

void LOGRingDispatcher::run() {
  m_ring->servedBy = m_threadId = VRKThread::currentThreadId();
  logServeQueue(
      *m_ring, m_interrupted, [&] { return deliverSome(); }, [&] { return m_ring->isEmpty(); });
  m_ring->file().remove();
  if (m_deletesItself) delete this;
}

// Without appenders what is queued is gone, as in any queue; but not what a process has left that had some.
bool LOGRingDispatcher::deliverSome() {
  if (!m_recovered && m_delivery.isReady()) {
    m_recovered = true;
    m_delivery.describe(*m_ring);
    logContainAll({"LOGDurableAsyncAppender -- could not recover", "LOGDurableAsyncAppender -- could not recover",
                   "LOGDurableAsyncAppender -- could not recover"},
                  [&] { recover(); });
  }
  return m_delivery.deliverSome(*m_ring);
}

void LOGRingDispatcher::recover() {
  LOGRingRecovery recovery(m_reporter);
  std::vector<I18NString> paths;
  for (const I18NString& directory : m_directories) {
    LOGRingFiles::removeUnfinished(directory);
    for (I18NString& path : LOGRingFiles::in(directory, m_name)) paths.push_back(std::move(path));
  }
  for (const std::unique_ptr<LOGRingRecovery::Left>& left : recovery.openAll(paths)) {
    if (!isOurs(*left->ring)) {
      LOGLogLog::warn(I18NString(std::string_view(m_reporter)) + left->ring->file().path() +
                      ": its events belong to another log file, " + I18NString(left->ring->targetPath()) +
                      "; log4vrk-recover delivers them");
    } else if (recovery.completeLines(*left)) {
      recovery.deliver(*left, m_delivery);
    }
  }
}

// Two programs may use one name.
bool LOGRingDispatcher::isOurs(const LOGRing& ring) const {
  const std::string path = ring.targetPath();
  return path.empty() ? ring.header().program == VRKProcess::programName() : path == m_delivery.path();
}
