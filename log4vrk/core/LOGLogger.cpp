#include "log4vrk/core/LOGLogger.h"

#include <algorithm>
#include <memory>
#include <typeinfo>

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGHierarchy.h"
#include "log4vrk/core/LOGLoggerRepository.h"
#include "log4vrk/core/LOGManager.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGAppenderLists.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/platform/VRKList.h"

const I18NString& LOGLogger::m_FQCN = vrkImmortal<I18NString>("LOGLogger");

namespace {

// The loggers that know what is enabled: those that a change of a level, a threshold or the tree has to make forget it.
// It is one list for all repositories, since such changes are rare, and what a logger below has inherited is not worth
// finding out.
struct Knowing {
  VRKMutex mutex;
  std::vector<std::atomic<std::int32_t>*> lowestEnabled VRK_GUARDED_BY(mutex);
};

Knowing& knowing() {
  static Knowing& all = vrkImmortal<Knowing>();
  return all;
}

}  // namespace

struct LOGLogger::Appenders {
  static LOGAppenderAttachableImpl copyOf(const LOGLogger& logger) {
    const LOGGuard guard(logger);
    return LOGAppenderAttachableImpl(logger.m_aai);
  }

  static LOGAppenderLists::Snapshot of(const LOGLogger& logger) {
    const LOGGuard guard(logger);
    return LOGAppenderLists::snapshot(logger.m_aai);
  }

  // Changes the list under the lock, and waits afterwards for the threads that use an earlier one: whoever has removed
  // an appender may delete it. Not under the lock, because those threads may need it to come to an end.
  template <typename Change>
  static void remove(LOGLogger& logger, Change change) {
    LOGAppenderUse::Lists earlier;
    {
      const LOGGuard guard(logger);
      change(logger.m_aai);
      earlier = LOGAppenderLists::takeEarlier(logger.m_aai);
    }
    LOGAppenderUse::letGo(std::move(earlier));
  }
};

LOGLogger::LOGLogger() : LOGLogger(I18NString()) {}

LOGLogger::LOGLogger(const I18NString& name) : m_name(new LOGLoggerName(name)) { instance("LOGLogger"); }

LOGLogger::LOGLogger(const LOGLogger& other)
    : LOGMutex(other),
      LOGAppenderAttachable(other),
      LOGObject(other),
      m_name(other.m_name),
      m_additive(other.getAdditivity()),
      m_aai(Appenders::copyOf(other)) {
  const LOGGuard guard(*this);
  if (const LOGLevel* const level = other.getLevel()) m_level = keptLevel(*level);
}

LOGLogger::~LOGLogger() {
  // Takes this logger out of the list, too, which points to its members. Where it is in no list nothing may fail: this
  // runs also when the constructor found no memory.
  if (m_lowestEnabled != NOT_YET_KNOWN) noteLevelChange();
  for (const LOGLevel* const kept : m_levels) delete kept;
}

LOGLogger* LOGLogger::getLogger(const I18NString& name) { return LOGManager::getLogger(name); }
LOGLogger* LOGLogger::getLogger(const I18NString& name, LOGLoggerFactory* factory) {
  return LOGManager::getLogger(name, factory);
}
LOGLogger* LOGLogger::getRootLogger() { return LOGManager::getRootLogger(); }
LOGLogger* LOGLogger::exists(const I18NString& name) { return LOGManager::exists(name); }
void LOGLogger::shutdown() { LOGManager::shutdown(); }

LOGLevel* LOGLogger::getChainedLevel() const {
  for (const LOGLogger* logger = this; logger != nullptr; logger = logger->getParent()) {
    if (LOGLevel* const level = logger->getLevel()) return level;
  }
  return nullptr;
}

bool LOGLogger::findOutIfPasses(LOGLevel* level) const {
  LOGLoggerRepository* const repository = getRepository();
  // A repository of another class is asked every time: nobody hears when it changes its mind.
  if (repository != nullptr && typeid(*repository) == typeid(LOGHierarchy)) keepLowestEnabled();
  return (repository == nullptr || !repository->isDisabled(level->toInt())) &&
         level->isGreaterOrEqual(getChainedLevel());
}

// Keeps the lowest rank that is enabled, so that the next call costs one comparison instead of a walk up the tree and a
// virtual call. Finding it out and keeping it are one step under the lock, which every change takes after it has been
// made: so either the change is seen here, or it makes the logger forget what was found before it.
void LOGLogger::keepLowestEnabled() const {
  const LOGLeafGuard guard(knowing().mutex);
  const LOGLevel* const chained = getChainedLevel();
  if (chained == nullptr || m_lowestEnabled != NOT_YET_KNOWN) return;
  // The caller has made sure of the class. The rank is that of the threshold when it was set.
  const int lowest = std::max(chained->toInt(), static_cast<LOGHierarchy*>(getRepository())->getThresholdRank());
  if (lowest == NOT_YET_KNOWN + 1) return;  // what stands for ALL
  try {
    knowing().lowestEnabled.push_back(&m_lowestEnabled);
  } catch (const std::bad_alloc&) {
    return;  // it asks again next time
  }
  m_lowestEnabled = lowest > NOT_YET_KNOWN ? lowest : NOT_YET_KNOWN + 1;
}

void LOGLogger::noteLevelChange() {
  const LOGLeafGuard guard(knowing().mutex);
  for (std::atomic<std::int32_t>* const lowest : knowing().lowestEnabled) *lowest = NOT_YET_KNOWN;
  knowing().lowestEnabled.clear();
}

bool LOGLogger::findOutIfEnabledFor(LOGLevel* level) const {
  if (getRepository() == nullptr) return false;
  VRK_ASSERT(level);
  return findOutIfPasses(level);
}

void LOGLogger::log(LOGLevel* level, LOGObject* message) {
  if (isEnabledFor(level)) forcedLog(m_FQCN, level, message);
}

void LOGLogger::l7dlog(LOGLevel* level, const I18NString& key) {
  const I18NString& text = getResourceBundleString(key);
  log(level, text.isEmpty() ? key : text);
}

void LOGLogger::l7dlog(LOGLevel* level, const I18NString& key, LOGObject*) { l7dlog(level, key); }

LOGLevel* LOGLogger::keptLevel(const LOGLevel& level) {
  for (LOGLevel* const kept : m_levels) {
    if (*kept == level && kept->toString() == level.toString()) return kept;
  }
  std::unique_ptr<LOGLevel> copy(vrkNew<LOGLevel>(VRK_HERE, level));
  m_levels.push_back(copy.get());
  return copy.release();
}

void LOGLogger::setLevel(LOGLevel* level) {
  logReport("LOGLogger::setLevel -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    m_level.store(level != nullptr ? keptLevel(*level) : nullptr, std::memory_order_release);
    noteLevelChange();
  });
}

void LOGLogger::addAppender(LOGAppenderSkeleton* appender) {
  logReport("LOGLogger::addAppender -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    m_aai.addAppender(appender);
    if (LOGLoggerRepository* const repository = getRepository()) repository->fireAddAppenderEvent(this, appender);
  });
}

VRKListIterator<LOGAppenderSkeleton*> LOGLogger::getAllAppenders() {
  return logReport("LOGLogger::getAllAppenders -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    return m_aai.getAllAppenders();
  });
}

LOGAppenderSkeleton* LOGLogger::getAppender(const I18NString& name) {
  return logReport("LOGLogger::getAppender -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    return m_aai.getAppender(name);
  });
}

bool LOGLogger::isAttached(LOGAppenderSkeleton* appender) {
  return logReport("LOGLogger::isAttached -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    return m_aai.isAttached(appender);
  });
}

void LOGLogger::removeAllAppenders() { removeAllAppenders(nullptr); }

void LOGLogger::removeAllAppenders(LOGHashtable* table) {
  logReport("LOGLogger::removeAllAppenders -- unable to lock mutex", [&] {
    const LOGAppenderLists::Snapshot before = Appenders::of(*this);
    {
      const LOGCallScope scope;
      LOGAppenderLists::closeAll(before);
    }
    Appenders::remove(
        *this, [&](LOGAppenderAttachableImpl& container) { LOGAppenderLists::forget(container, before, table); });
  });
}

void LOGLogger::removeAppender(LOGAppenderSkeleton* appender) {
  logReport("LOGLogger::removeAppender -- unable to lock mutex", [&] {
    Appenders::remove(*this, [&](LOGAppenderAttachableImpl& container) { container.removeAppender(appender); });
  });
}

void LOGLogger::removeAppender(const I18NString& name) {
  logReport("LOGLogger::removeAppender -- unable to lock mutex", [&] {
    Appenders::remove(*this, [&](LOGAppenderAttachableImpl& container) { container.removeAppender(name); });
  });
}

void LOGLogger::drainAppenders() {
  if (appenders().load(std::memory_order_acquire) == nullptr) return;
  if (const LOGAppenderLists::Snapshot list = Appenders::of(*this)) LOGAppenderInternals::drainAll(*list);
}

void LOGLogger::closeNestedAppenders() {
  logReport("LOGLogger::closeNestedAppenders -- unable to lock mutex", [&] {
    const LOGAppenderLists::Snapshot appenders = Appenders::of(*this);
    const LOGCallScope scope;
    LOGAppenderLists::closeAll(appenders);
  });
}

LOGObject* LOGLogger::clone() const {
  VRKAssertError::raise("VRK_ASSERT_NAMED(FALSE, \"Not allowed to clone LOGLogger object.\");", VRK_HERE);
}
