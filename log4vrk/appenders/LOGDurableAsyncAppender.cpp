#include "log4vrk/appenders/LOGDurableAsyncAppender.h"

#include <typeinfo>
#include <utility>

#include "log4vrk/appenders/internal/LOGQueueThread.h"
#include "log4vrk/appenders/internal/LOGRing.h"
#include "log4vrk/appenders/internal/LOGRingDispatcher.h"
#include "log4vrk/appenders/internal/LOGRingFiles.h"
#include "log4vrk/appenders/internal/LOGServedQueues.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGAppenderLists.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/platform/VRKConfigurationFactory.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"
#include "log4vrk/platform/internal/VRKProcess.h"

namespace {

constexpr LOGFailureTexts FAILURES = {"LOGDurableAsyncAppender::append --- ", "LOGDurableAsyncAppender::append --- ",
                                      "LOGDurableAsyncAppender::append --- An unknown exception has occurred.",
                                      LOGFailureTexts::EVENT_IS_LOST};

}  // namespace

const LOGAppenderInternals LOGDurableAsyncAppender::INTERNALS = {&typeid(LOGDurableAsyncAppender),
                                                                 true,
                                                                 &LOGDurableAsyncAppender::appendFast,
                                                                 nullptr,
                                                                 nullptr,
                                                                 &LOGDurableAsyncAppender::drain,
                                                                 &LOGDurableAsyncAppender::appendCall,
                                                                 &LOGAsyncAppender::attachedTo};

LOGDurableAsyncAppender::LOGDurableAsyncAppender() : LOGAsyncAppender("LOGDurableAsyncAppender", INTERNALS) {}

LOGDurableAsyncAppender::~LOGDurableAsyncAppender() {
  const VRKNoCancellation finished;
  try {
    LOGDurableAsyncAppender::close();
  } catch (...) {
    // close() has written its line.
  }
}

std::shared_ptr<LOGRing> LOGDurableAsyncAppender::ring() {
  const LOGGuard guard(*this);
  return m_open != nullptr ? m_ring : nullptr;
}

// Looks without the lock first, because it is called before every event.
void LOGDurableAsyncAppender::activateOptions() {
  if (getClosed() == 0 && m_forks == VRKThread::forks()) return;
  const LOGGuard guard(*this);
  if ((getClosed() == 0 && m_forks == VRKThread::forks()) || m_closing) return;
  start();
}

// A forked child has no dispatcher thread, and what is queued is the parent's to deliver. So it begins anew.
void LOGDurableAsyncAppender::start() {
  const std::vector<I18NString> places = directories();
  const bool isNew = !m_ring || m_forks != VRKThread::forks();
  vrkTranslateErrors(VRK_HERE, [&]() VRK_NO_THREAD_SAFETY_ANALYSIS {
    if (isNew) {
      m_ringDispatcher.reset();
      m_ring = makeRing(places);
      m_ringDispatcher =
          std::make_unique<LOGLastingDispatcher<LOGRingDispatcher>>(m_ring, m_aai, name().toUtf8(), places);
      m_forks = VRKThread::forks();
    }
    if (const LOGAppenderLists::Snapshot list = attached()) LOGRingDelivery::describe(*m_ring, *list);
    LOGServedQueues::add(m_ring);
  });
  // In this order: a dispatcher that runs is one that close() ends.
  m_open = m_ring.get();
  m_ringDispatcher->start();
  setClosed(0);
}

I18NString LOGDurableAsyncAppender::name() const { return m_queueName.isEmpty() ? getName() : m_queueName; }

std::vector<I18NString> LOGDurableAsyncAppender::directories() const {
  if (m_directory.isEmpty()) return LOGRingFiles::defaultDirectories();
  return {VRKProcess::absolutePath(VRKConfigurationFactory::getInstance().resolvePath(m_directory))};
}

std::shared_ptr<LOGRing> LOGDurableAsyncAppender::makeRing(const std::vector<I18NString>& directories) const {
  const std::uint64_t slots = LOGRing::slotsFor(m_bufferSize);
  const std::size_t bytes = LOGRing::bytesFor(slots);
  const I18NString reporter = "LOGDurableAsyncAppender -- [" + name() + "] -- ";
  const std::string name = this->name().toUtf8();
  const auto begin = [&](VRKMappedFile& file) { LOGRing::begin(file, slots, name); };
  std::unique_ptr<VRKMappedFile> file;
  for (const I18NString& directory : directories) {
    std::string why;
    file = LOGRingFiles::make(directory, name, bytes, begin, why);
    if (file) break;
    LOGLogLog::warn(reporter + "no queue in " + directory + ": " + I18NString(std::string_view(why)));
  }
  if (!file) {
    LOGLogLog::error(reporter + "events are in memory only, and a kill takes them along");
    file = std::make_unique<VRKMappedFile>();
    if (!file->makeAnonymous(bytes)) throw VRKSystemError(file->getLastError(), "memory for a queue", VRK_HERE);
    begin(*file);
  }
  auto ring = std::make_shared<LOGRing>();
  ring->use(std::move(file));
  return ring;
}

void LOGDurableAsyncAppender::append(LOGLoggingEvent* event) {
  VRK_ASSERT(event);
  // Does nothing but in a forked child, which needs a ring of its own.
  if (getClosed() == 0) activateOptions();
  LOGRing* const ring = m_open;
  if (m_closing || ring == nullptr) {
    reportClosed();
    return;
  }
  logContain(FAILURES, [&] { put(*ring, *event); });
}

bool LOGDurableAsyncAppender::appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event) {
  auto& self = static_cast<LOGDurableAsyncAppender&>(appender);
  if (!LOGAppenderInternals::admitsFast(self, event)) return false;
  if (self.getClosed() != 0 || self.m_forks != VRKThread::forks()) return false;  // it has to be activated first
  self.LOGAppenderSkeleton::doAppend(event);
  return true;
}

// As in the ordinary queue. A ring is there for those who come after this process, so it holds the text.
bool LOGDurableAsyncAppender::appendCall(LOGAppenderSkeleton& appender, LOGStatementCall& call) {
  auto& self = static_cast<LOGDurableAsyncAppender&>(appender);
  if (!self.takesCalls()) return false;
  LOGRing* const ring = self.m_open;
  bool isDone = true;
  logContain(FAILURES, [&] { isDone = ring != nullptr && ring->putCall(call); });
  return isDone;
}

// Without the lock: the ring lives as long as the appender, and a closed one refuses the event.
void LOGDurableAsyncAppender::put(LOGRing& ring, LOGLoggingEvent& event) {
  std::unique_ptr<LOGLoggingEvent> copy;
  bool lasts = true;
  std::uint64_t end = 0;
  LOGRing::Outcome outcome = ring.put(event, copy, lasts, end);
  if (outcome == LOGBoundedFIFO::FULL) {
    outcome = LOGServedQueues::waitForSpace(
        ring, m_interrupted, LOGBoundedFIFO::FULL, [&] { return ring.put(event, copy, lasts, end); },
        [&] { return getClosed() != 0 && !m_closing; });
  }
  if (outcome == LOGBoundedFIFO::CLOSED) reportClosed();
  if (outcome == LOGBoundedFIFO::FULL) LOGBoundedFIFO::reportFull();
  if (outcome != LOGBoundedFIFO::QUEUED || lasts) return;
  // It is in memory only, so the call must not return before it has been delivered. A thread that serves a queue may be
  // the one that others wait for.
  if (LOGDeferral::onDispatcher()) return;
  LOGPolling polling;
  while (ring.delivered.load() < end) polling.waitShortly();
}

void LOGDurableAsyncAppender::close() {
  std::unique_ptr<LOGRingDispatcher> dispatcher;
  logContain("LOGDurableAsyncAppender::close --- ", [&] { dispatcher = takeRingDispatcher(); });
  if (!dispatcher) return;
  LOGServedQueues::finish(std::move(dispatcher), [&] {
    const LOGGuard guard(*this);
    m_open = nullptr;
  });
}

std::unique_ptr<LOGRingDispatcher> LOGDurableAsyncAppender::takeRingDispatcher() {
  const LOGGuard guard(*this);
  if (getClosed() != 0) return nullptr;
  m_closing = true;  // first: a log call that waits for space shall not find a queue that is closed for another reason
  setClosed(1);
  return std::move(m_ringDispatcher);
}

bool LOGDurableAsyncAppender::drain(LOGAppenderSkeleton& appender) {
  auto& self = static_cast<LOGDurableAsyncAppender&>(appender);
  const std::shared_ptr<LOGRing> owned = self.ring();
  if (!owned || self.m_forks != VRKThread::forks() || LOGDeferral::onDispatcher()) return true;
  const bool delivered = LOGServedQueues::drain(*owned, [&] { return self.getClosed() != 0; });
  if (const LOGAppenderLists::Snapshot list = self.attached()) LOGAppenderInternals::drainAll(*list);
  return delivered;
}

void LOGDurableAsyncAppender::setBufferSize(int size) {
  const LOGGuard guard(*this);
  m_bufferSize = size;
}

int LOGDurableAsyncAppender::getBufferSize() {
  const LOGGuard guard(*this);
  return m_bufferSize;
}

void LOGDurableAsyncAppender::setQueueName(const I18NString& name) {
  const LOGGuard guard(*this);
  m_queueName = name;
}

I18NString LOGDurableAsyncAppender::getQueueName() {
  const LOGGuard guard(*this);
  return m_queueName;
}

void LOGDurableAsyncAppender::setDirectory(const I18NString& directory) {
  const LOGGuard guard(*this);
  m_directory = directory;
}

I18NString LOGDurableAsyncAppender::getDirectory() {
  const LOGGuard guard(*this);
  return m_directory;
}
