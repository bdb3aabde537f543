#include "log4vrk/core/LOGHierarchy.h"

#include <algorithm>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGHierarchyEventListener.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGProvisionNode.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGShutdownHook.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

LOGLoggerFactory::~LOGLoggerFactory() = default;
LOGDefaultLoggerFactory::~LOGDefaultLoggerFactory() = default;
LOGLoggerRepository::~LOGLoggerRepository() = default;
LOGRendererSupport::~LOGRendererSupport() = default;

LOGHierarchyEventListener::~LOGHierarchyEventListener() = default;
void LOGHierarchyEventListener::addAppenderEvent(LOGLogger*, LOGAppenderSkeleton*) {}
void LOGHierarchyEventListener::removeAppenderEvent(LOGLogger*, LOGAppenderSkeleton*) {}

LOGLogger* LOGDefaultLoggerFactory::makeNewLoggerInstance(const I18NString& name) {
  try {
    return new LOGLogger(name);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

namespace {

// Of the ancestors that have not been made, those with a longer name get no placeholder: the names of the placeholders
// of one logger take the square of this together, and nobody makes such a logger by accident.
constexpr std::size_t LONGEST_PLACEHOLDER = 256;

bool isPlaceholder(const LOGObject* entry) {
  static const I18NString& name = vrkImmortal<I18NString>("LOGProvisionNode");
  return entry->instanceOf() == name;
}

// Every entry that is no placeholder is a logger, whatever class a factory made.
LOGLogger* asLogger(LOGObject* entry) {
  return entry == nullptr || isPlaceholder(entry) ? nullptr : static_cast<LOGLogger*>(entry);
}

// The link has been made, whether or not there is memory to tell of it.
void reportLink(const LOGLogger& parent, const LOGLogger& child) {
  try {
    LOGLogLog::debug("Add logger [" + parent.getName() + "] as parent of [" + child.getName() + "].");
  } catch (const std::bad_alloc&) {
  }
}

void reportFailure(const char* operation, const char* cause) {
  try {
    LOGLogLog::error(I18NString(operation) + cause);
  } catch (const std::bad_alloc&) {
    // The operation goes on, which matters more.
  }
}

// Runs one step of an operation that goes on whatever happens.
template <typename Step>
void attempt(const char* operation, Step step) {
  try {
    step();
  } catch (VRKThrowable& error) {
    reportFailure(operation, error.what());
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    reportFailure(operation, "unknown error");
  }
}

// A table that got no buckets takes nothing, for good. A repository can be made again.
LOGHashtable* makeTable() {
  std::unique_ptr<LOGHashtable> table(vrkNew<LOGHashtable>(VRK_HERE));
  if (table->capacity() == 0) throw VRKOutOfMemoryError(VRK_HERE);
  return table.release();
}

// Application code that the library calls must not take the ground from under the library call that it runs in.
bool refusedInside(const char* operation) {
  if (!LOGDeferral::active()) return false;
  reportFailure(operation, "called from inside a log call, ignored");
  return true;
}

}  // namespace

LOGHierarchy::LOGHierarchy(LOGLogger* root)
    : m_ht(makeTable()), m_root(root), m_thresholdRank(LOGLevel::ALL_OBJ->toInt()) {
  if (m_root) m_root->setRepository(this);
}

LOGHierarchy::~LOGHierarchy() {
  const VRKNoCancellation finished;
  closeAllAppenders();
  attempt("LOGHierarchy::shutdown -- ", [] { LOGRendererMap::clear(); });
  m_ht->forEach([](LOGObject* element) { delete element; });
}

void LOGHierarchy::emitNoAppenderWarning(LOGLogger* logger) {
  VRK_ASSERT(logger);
  if (m_emittedNoAppenderWarning.exchange(1) != 0) return;
  LOGLogLog::warn("No appenders could be found for logger (" + logger->getName() + ").");
}

LOGLogger* LOGHierarchy::find(const I18NString& name) {
  const LOGGuard guard(*m_ht);
  return asLogger(m_ht->get(name));
}

LOGLogger* LOGHierarchy::exists(const I18NString& name) {
  return logReport("LOGHierarchy::exists -- unable to lock mutex", [&] { return find(name); });
}

void LOGHierarchy::setThreshold(const I18NString& level) {
  if (LOGLevel* const found = LOGLevel::toLevel(level, nullptr)) {
    setThreshold(found);
  } else {
    // The bracket stays open on purpose: existing tools look for this line.
    LOGLogLog::warn("Could not convert [" + level + " to Level.");
  }
}

void LOGHierarchy::setThreshold(LOGLevel* level) {
  if (level == nullptr) return;
  logReport("LOGHierarchy::setThreshold -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    m_threshold.store(level, std::memory_order_release);
    m_thresholdRank.store(level->toInt(), std::memory_order_relaxed);
    LOGLogger::noteLevelChange();
  });
}

void LOGHierarchy::fireAddAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender) {
  const auto listeners = logReport("LOGHierarchy::fireAddAppenderEvent -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    return m_listeners;
  });
  const LOGCallScope scope;
  for (LOGHierarchyEventListener* listener : listeners) listener->addAppenderEvent(logger, appender);
}

void LOGHierarchy::addHierarchyEventListener(LOGHierarchyEventListener* listener) {
  VRK_ASSERT(listener);
  logReport("LOGHierarchy::addHierarchyEventListener -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    const bool isNew = std::find(m_listeners.begin(), m_listeners.end(), listener) == m_listeners.end();
    if (isNew) m_listeners.push_back(listener);
  });
}

LOGLogger* LOGHierarchy::getLogger(const I18NString& name) { return getLogger(name, &m_defaultFactory); }

LOGLogger* LOGHierarchy::getLogger(const I18NString& name, LOGLoggerFactory* factory) {
  VRK_ASSERT(m_ht);
  return logReport("LOGHierarchy::getLogger -- unable to lock mutex", [&] {
    return vrkTranslateErrors(VRK_HERE, [&] {
      if (LOGLogger* const found = find(name)) return found;
      LOGLogLog::debug("Creating new instance of LOGLogger: " + name);
      VRK_ASSERT(factory);
      const LOGCallScope scope;
      LOGLogger* const logger = factory->makeNewLoggerInstance(name);
      VRK_ASSERT(logger);
      logger->setRepository(this);
      return add(name, logger);
    });
  });
}

// The new logger is not freed, whatever happens: its factory may have logged through it, and those events are delivered
// when this call has ended.
LOGLogger* LOGHierarchy::add(const I18NString& name, LOGLogger* made) {
  const VRKNoCancellation finished;  // half a link would lead to a logger that nobody keeps
  const LOGGuard guard(*m_ht);
  LOGObject* const entry = m_ht->get(name);
  if (LOGLogger* const winner = asLogger(entry)) {
    keepUnlisted(made);
    return winner;
  }
  makeRoomFor(name, made);
  // From here on nothing is raised. The parent comes first: as soon as the logger can be found, it has to have a level.
  LOGLogger* const parent = updateParents(name, made);
  made->setParent(parent);
  const std::unique_ptr<LOGProvisionNode> node(static_cast<LOGProvisionNode*>(entry));
  if (!store(name, made)) {
    LOGLogLog::error("LOGHierrachy::getLogger ---- Could not put Logger in LOGHashtable");
    keepUnlisted(made);
  }
  if (node) updateChildren(node.get(), made);
  const I18NString below = name + ".";
  for (LOGLogger* waiting : m_waiting) {
    if (askedName(waiting).startsWith(below)) updateChild(waiting, made);
  }
  made->setParent(parent);  // children that have stayed with the root may have led it there
  return made;
}

void LOGHierarchy::makeRoomFor(const I18NString& name, const LOGLogger* made) {
  if (m_waiting.size() == m_waiting.capacity()) m_waiting.reserve(2 * m_waiting.size() + 1);
  if (made->getName() != name) m_askedNames.emplace(made, name);
}

bool LOGHierarchy::store(const I18NString& name, LOGLogger* logger) {
  try {
    return m_ht->replace(name, logger) || m_ht->put(name, logger) != 0;
  } catch (const VRKOutOfMemoryError&) {
    return false;
  }
}

void LOGHierarchy::keepUnlisted(LOGLogger* logger) {
  std::unique_ptr<LOGLogger> kept(logger);
  try {
    const LOGGuard guard(*this);
    m_unlisted.push_back(std::move(kept));
  } catch (const std::exception&) {
    static_cast<void>(kept.release());
  }
}

const I18NString& LOGHierarchy::askedName(const LOGLogger* logger) const {
  const auto other = m_askedNames.find(logger);
  return other != m_askedNames.end() ? other->second : logger->getName();
}

// Walks from the longest ancestor up to the first one that has been made, which is the parent. At those before it
// the logger waits, so that it is found when one of them is made. Above it nobody has to wait: whoever is made there
// becomes the parent of that ancestor.
//
// The hash code of each ancestor comes from the one before it. Together with a table that compares names only when hash
// codes are equal that makes the walk linear in the length of the name.
LOGLogger* LOGHierarchy::updateParents(const I18NString& name, LOGLogger* logger) {
  const std::u16string_view whole = name.view();
  std::uint32_t hash = LOGLoggerKey::hashOf(name);
  LOGLogger* parent = nullptr;
  bool waitsEverywhere = true;
  for (std::size_t end = whole.size(); end-- > 0 && parent == nullptr;) {
    hash = LOGLoggerKey::hashBefore(hash, whole[end]);
    if (whole[end] != u'.') continue;
    const std::u16string_view ancestor = whole.substr(0, end);
    LOGObject* const entry = m_ht->get(ancestor, hash);
    parent = asLogger(entry);
    if (parent == nullptr && !waitAt(ancestor, entry, logger)) waitsEverywhere = false;
  }
  if (!waitsEverywhere) m_waiting.push_back(logger);  // makeRoomFor() has made the room
  return parent != nullptr ? parent : m_root.get();
}

// False when the name is too long for a placeholder, or memory is short.
bool LOGHierarchy::waitAt(std::u16string_view ancestor, LOGObject* entry, LOGLogger* logger) {
  if (ancestor.size() > LONGEST_PLACEHOLDER) return false;
  try {
    if (entry != nullptr) {
      static_cast<LOGProvisionNode*>(entry)->push_back(logger);
      return true;
    }
    auto node = std::make_unique<LOGProvisionNode>(logger);
    if (m_ht->put(I18NString(ancestor), node.get()) == 0) return false;
    static_cast<void>(node.release());
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void LOGHierarchy::updateChildren(LOGProvisionNode* provisionNode, LOGLogger* parentLogger) {
  VRK_ASSERT(provisionNode);
  VRK_ASSERT(parentLogger);
  for (LOGObject* waiting : *provisionNode) updateChild(static_cast<LOGLogger*>(waiting), parentLogger);
}

// Puts the new logger between a logger that waited for it and that one's parent, unless the parent is nearer already.
void LOGHierarchy::updateChild(LOGLogger* child, LOGLogger* parentLogger) {
  LOGLogger* const before = child->getParent();
  // Nearer means: begins with the new logger's name. A plain prefix decides, without a look at the dot, and the root
  // counts by its name too: meant so, existing trees rely on it.
  if (askedName(before).startsWith(askedName(parentLogger))) return;
  reportLink(*before, *parentLogger);
  parentLogger->setParent(before);
  reportLink(*parentLogger, *child);
  child->setParent(parentLogger);
}

VRKList<LOGLogger*>* LOGHierarchy::getCurrentLoggers() {
  return logReport("LOGHierarchy::getCurrentLoggers -- unable to lock mutex", [&] {
    return vrkTranslateErrors(VRK_HERE, [&] {
      auto loggers = std::make_unique<VRKList<LOGLogger*>>();
      const LOGGuard guard(*m_ht);
      m_ht->forEach([&](LOGObject* element) {
        if (LOGLogger* const logger = asLogger(element)) loggers->push_back(logger);
      });
      return loggers.release();
    });
  });
}

void LOGHierarchy::setRenderer(LOGObject* renderedClass, LOGObjectRenderer* renderer) {
  LOGRendererMap::put(renderedClass, renderer);
}

void LOGHierarchy::setRenderer(const I18NString& renderedClassName, LOGObjectRenderer* renderer) {
  LOGRendererMap::put(renderedClassName, renderer);
}

void LOGHierarchy::resetConfiguration() {
  VRK_ASSERT(m_root);
  VRK_ASSERT(m_ht);
  static constexpr char OPERATION[] = "LOGHierarchy::resetConfiguration -- ";
  if (refusedInside(OPERATION)) return;
  attempt(OPERATION, [&] {
    m_root->setLevel(LOGLevel::DEBUG_OBJ);
    setThreshold(LOGLevel::ALL_OBJ);
    shutdown();
    const std::unique_ptr<VRKList<LOGLogger*>> loggers(getCurrentLoggers());
    for (LOGLogger* logger : *loggers) {
      logger->setLevel(nullptr);
      logger->setAdditivity(1);
    }
    LOGRendererMap::clear();
  });
}

void LOGHierarchy::drainAppenders() {
  if (m_root) m_root->drainAppenders();
  const std::unique_ptr<VRKList<LOGLogger*>> loggers(getCurrentLoggers());
  for (LOGLogger* logger : *loggers) logger->drainAppenders();
}

void LOGHierarchy::closeAllAppenders() {
  static constexpr char OPERATION[] = "LOGHierarchy::shutdown -- ";
  attempt(OPERATION, [&] { drainAppenders(); });
  attempt(OPERATION, [&] {
    if (m_root) m_root->closeNestedAppenders();
  });
  attempt(OPERATION, [&] {
    const std::unique_ptr<VRKList<LOGLogger*>> loggers(getCurrentLoggers());
    for (LOGLogger* logger : *loggers) attempt(OPERATION, [&] { logger->closeNestedAppenders(); });
  });
}

void LOGHierarchy::shutdown() {
  if (refusedInside("LOGHierarchy::shutdown -- ")) return;
  closeAllAppenders();
  attempt("LOGHierarchy::shutdown -- ", [] { LOGShutdownHook::call(); });
  LOGLogLog::shutdown();
}
