#include "log4vrk/appenders/internal/LOGRingDelivery.h"

#include <typeinfo>

#include "log4vrk/appenders/LOGFileAppender.h"
#include "log4vrk/appenders/internal/LOGQueueThread.h"
#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/internal/LOGLayoutInternals.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/internal/VRKFault.h"
#include "log4vrk/platform/internal/VRKProcess.h"

namespace {

I18NString patternOf(LOGLayout* layout) {
  if (layout == nullptr) return {};
  if (typeid(*layout) == typeid(LOGLayout)) return "%m%n";
  const LOGLayoutInternals* const internals = LOGLayoutInternals::of(*layout);
  return internals != nullptr && internals->pattern != nullptr ? internals->pattern(*layout) : I18NString();
}

// A relative name leads elsewhere when the program does.
I18NString absolute(const I18NString& file) { return file.startsWith("/") ? file : VRKProcess::absolutePath(file); }

LOGFileAppender* fileAppenderIn(const LOGAppenderList& list) {
  for (const LOGAppenderList::Attached& each : list.attached) {
    if (auto* const appender = dynamic_cast<LOGFileAppender*>(each.appender)) return appender;
  }
  return nullptr;
}

}  // namespace

// The appenders of the container, in use and holding back, with the journal kept where it can be.
class LOGRingDelivery::Batch {
 public:
  explicit Batch(LOGRingDelivery& delivery)
      : m_thread(LOGThreadState::current()),
        m_deferral(m_thread),
        m_use(m_thread.uses.delivering, delivery.m_container->place()),
        m_target(targetOf(list())),
        m_held(list()) {
    if (m_target != nullptr) m_isKept = m_target->keepJournal(delivery, delivery.m_file);
    if (m_isKept) delivery.find(*m_target);
  }

  const LOGAppenderList& list() const {
    static const LOGAppenderList& none = vrkImmortal<LOGAppenderList>(std::vector<LOGAppenderList::Attached>());
    return m_use.list() != nullptr ? *m_use.list() : none;
  }
  LOGThreadState& thread() const { return m_thread; }
  LOGFileAppender* target() const { return m_target; }
  bool isKept() const { return m_isKept; }
  int most() const { return m_held.all() ? LOG_MOST_AT_ONCE : 1; }

 private:
  static LOGFileAppender* targetOf(const LOGAppenderList& list) {
    LOGFileAppender* const target = fileAppenderIn(list);
    if (target != nullptr) target->activateOptions();  // opens the file
    return target;
  }

  LOGThreadState& m_thread;
  const LOGDeferral m_deferral;
  const LOGAppenderUse m_use;
  LOGFileAppender* const m_target;
  const LOGHoldingBack m_held;
  bool m_isKept = false;
};

LOGRingDelivery::LOGRingDelivery(std::shared_ptr<LOGAppenderAttachableImpl> container)
    : m_container(std::move(container)) {}

bool LOGRingDelivery::isReady() {
  const LOGGate::Pass inside;
  const Batch batch(*this);
  return !batch.list().attached.empty() && (batch.target() == nullptr || batch.isKept());
}

void LOGRingDelivery::find(LOGFileAppender& target) {
  I18NString file = absolute(m_file);
  I18NString pattern = patternOf(target.getLayout());
  if (file == m_absolute && pattern == m_layoutPattern) return;
  m_absolute = std::move(file);
  m_layoutPattern = std::move(pattern);
  m_path = m_absolute.toUtf8();
  m_pattern = m_layoutPattern.toUtf8();
  m_described = nullptr;
}

void LOGRingDelivery::describe(LOGRing& ring, const LOGAppenderList& list) {
  LOGFileAppender* const target = fileAppenderIn(list);
  if (target == nullptr) return;
  ring.setTarget(absolute(target->getFile()).toUtf8(), patternOf(target->getLayout()).toUtf8());
}

void LOGRingDelivery::describe(LOGRing& ring) {
  if (m_described == &ring) return;
  ring.setTarget(m_path, m_pattern);
  m_described = &ring;
}

// The events are released when everything that is held back has been: whoever is killed before that delivers them to
// the other appenders once more. The target has got those before written() already.
bool LOGRingDelivery::deliverSome(LOGRing& ring) {
  const LOGGate::Pass inside;
  if (!ring.hasNext()) return false;
  {
    m_ring = &ring;
    m_end = ring.position();
    const Batch batch(*this);
    if (batch.isKept()) describe(ring);
    int delivered = 0;
    do {
      const LOGAppenderSkeleton* const hasIt = ring.position() < ring.written() ? batch.target() : nullptr;
      deliver(ring.get(), batch.list(), hasIt, batch.thread());
    } while (++delivered < batch.most() && !LOGDeferral::hasPutOff() && ring.hasNext());
  }
  m_ring = nullptr;
  VRKFault::mayDie(VRKFault::QUEUE_SETTLED);
  ring.release();
  return true;
}

void LOGRingDelivery::deliver(LOGLoggingEvent* event, const LOGAppenderList& list, const LOGAppenderSkeleton* except,
                              LOGThreadState& thread) {
  try {
    list.append(event, thread, m_container->place(), except);
  } catch (VRKThrowable& error) {
    LOGLogLog::error(error);
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    // The appender's doAppend() has written its line, and the next event is not to blame.
  }
}

void LOGRingDelivery::collected() {
  if (m_ring != nullptr) m_end = m_ring->position();
}

void LOGRingDelivery::writes(const Place& place, std::string_view lines) {
  if (m_ring == nullptr || VRKFault::hit(VRKFault::QUEUE_LINES)) return;
  if (!m_ring->announce(m_end, place, lines)) {
    LOGLogLog::error("LOGDurableAsyncAppender -- a line is too long to outlive a kill: " + m_ring->file().path());
  }
  VRKFault::mayDie(VRKFault::QUEUE_ANNOUNCED);
}

void LOGRingDelivery::wrote() {
  VRKFault::mayDie(VRKFault::QUEUE_WRITTEN);
  if (m_ring != nullptr) m_ring->settle(m_end);
}
