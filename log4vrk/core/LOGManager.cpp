#include "log4vrk/core/LOGManager.h"

#include <atomic>
#include <memory>

#include "log4vrk/core/LOGDefaultRepositorySelector.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGHierarchy.h"
#include "log4vrk/core/LOGRootLogger.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKMutex.h"

LOGRepositorySelector::~LOGRepositorySelector() = default;
LOGDefaultRepositorySelector::~LOGDefaultRepositorySelector() = default;

const I18NString& LOGManager::m_DEFAULT_CONFIGURATION_FILE = vrkImmortal<I18NString>();
const I18NString& LOGManager::m_DEFAULT_CONFIGURATION_KEY = vrkImmortal<I18NString>();
const I18NString& LOGManager::m_DEFAULT_INIT_OVERRIDE_KEY = vrkImmortal<I18NString>();
const I18NString& LOGManager::m_CONFIGURATOR_CLASS_KEY = vrkImmortal<I18NString>();

namespace {

VRKMutex g_mutex;
std::atomic<LOGRepositorySelector*> g_selector{nullptr};
LOGRepositorySelector* g_default VRK_GUARDED_BY(g_mutex) = nullptr;  // kept when a program sets another
std::atomic<LOGObject*> g_guard{nullptr};

// Root, hierarchy and selector are never freed: static destructors of the program may still log. Each has an owner only
// until the next has taken it over, for the case that memory ends half-way.
LOGRepositorySelector* makeDefaultSelector() VRK_REQUIRES(g_mutex) {
  std::unique_ptr<LOGLogger> root(vrkNew<LOGRootLogger>(VRK_HERE, LOGLevel::DEBUG_OBJ));
  std::unique_ptr<LOGHierarchy> hierarchy(vrkNew<LOGHierarchy>(VRK_HERE, root.get()));
  static_cast<void>(root.release());
  g_default = vrkNew<LOGDefaultRepositorySelector>(VRK_HERE, hierarchy.get());
  static_cast<void>(hierarchy.release());
  return g_default;
}

// Keeps a clone: the program's guard may be gone when the next one is compared with it. An object that refuses to be
// cloned is kept itself.
LOGObject* keptGuard(LOGObject* guard) {
  try {
    return guard->clone();
  } catch (const VRKThrowable&) {
    return guard;
  }
}

}  // namespace

void LOGManager::init() {
  if (hasSelector()) return;
  const LOGLeafGuard guard(g_mutex);
  if (!hasSelector()) g_selector.store(makeDefaultSelector(), std::memory_order_release);
}

bool LOGManager::hasSelector() { return g_selector.load(std::memory_order_acquire) != nullptr; }

LOGLoggerRepository* LOGManager::getLoggerRepository() {
  init();
  return g_selector.load(std::memory_order_acquire)->getLoggerRepository();
}

LOGLogger* LOGManager::getRootLogger() { return getLoggerRepository()->getRootLogger(); }
LOGLogger* LOGManager::getLogger(const I18NString& name) { return getLoggerRepository()->getLogger(name); }
LOGLogger* LOGManager::getLogger(const I18NString& name, LOGLoggerFactory* factory) {
  return getLoggerRepository()->getLogger(name, factory);
}
LOGLogger* LOGManager::exists(const I18NString& name) { return getLoggerRepository()->exists(name); }
VRKList<LOGLogger*>* LOGManager::getCurrentLoggers() { return getLoggerRepository()->getCurrentLoggers(); }
void LOGManager::resetConfiguration() { getLoggerRepository()->resetConfiguration(); }

void LOGManager::shutdown() {
  if (hasSelector()) getLoggerRepository()->shutdown();
}

void LOGManager::setRepositorySelector(LOGRepositorySelector* selector, LOGObject* guard) {
  VRK_ASSERT(guard);
  // No lock is held, because comparing and cloning run the program's code. Of two threads that give the first guard at
  // once, one wins, and the other is judged by that guard.
  LOGObject* first = g_guard.load(std::memory_order_acquire);
  if (first != nullptr && *first != *guard) return;
  if (selector == nullptr) return;
  if (first == nullptr) {
    LOGObject* const kept = keptGuard(guard);
    if (!g_guard.compare_exchange_strong(first, kept)) {
      if (kept != guard) delete kept;
      if (*first != *guard) return;
    }
  }
  g_selector.store(selector, std::memory_order_release);
}
