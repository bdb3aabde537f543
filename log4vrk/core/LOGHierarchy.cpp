#include "log4vrk/core/LOGHierarchy.h"

#include <algorithm>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGHierarchyEventListener.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGProvisionNode.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGShutdownHook.h"

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

bool isPlaceholder(const LOGObject* entry) {
  static const I18NString& name = vrkImmortal<I18NString>("LOGProvisionNode");
  return entry->instanceOf() == name;
}

// Every entry that is no placeholder is a logger, whatever class a factory made.
LOGLogger* asLogger(LOGObject* entry) {
  return entry == nullptr || isPlaceholder(entry) ? nullptr : static_cast<LOGLogger*>(entry);
}

template <typename Visitor>
void visitElements(const LOGHashtable& table, Visitor visitor) {
  const std::unique_ptr<VRKList<LOGObject*>> elements(table.elements());
  for (LOGObject* element : *elements) visitor(element);
}

void reportLink(const LOGLogger& parent, const LOGLogger& child) {
  LOGLogLog::debug("Add logger [" + parent.getName() + "] as parent of [" + child.getName() + "].");
}

// Runs one step of an operation that goes on whatever happens.
template <typename Step>
void attempt(const char* operation, Step step) {
  try {
    step();
  } catch (VRKThrowable& error) {
    LOGLogLog::error(I18NString(operation) + error.what());
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    LOGLogLog::error(I18NString(operation) + "unknown error");
  }
}

// Application code that the library calls must not take the ground from under the library call that it runs in.
bool refusedInside(const char* operation) {
  if (!LOGDeferral::active()) return false;
  LOGLogLog::error(I18NString(operation) + "called from inside a log call, ignored");
  return true;
}

}  // namespace

LOGHierarchy::LOGHierarchy(LOGLogger* root)
    : m_root(root), m_ht(vrkNew<LOGHashtable>(VRK_HERE)), m_thresholdRank(LOGLevel::ALL_OBJ->toInt()) {
  if (m_root) m_root->setRepository(this);
}

LOGHierarchy::~LOGHierarchy() {
  closeAllAppenders();
  LOGRendererMap::clear();
  visitElements(*m_ht, [](LOGObject* element) { delete element; });
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
    if (LOGLogger* const found = find(name)) return found;
    LOGLogLog::debug("Creating new instance of LOGLogger: " + name);
    VRK_ASSERT(factory);
    const LOGCallScope scope;
    std::unique_ptr<LOGLogger> logger(factory->makeNewLoggerInstance(name));
    VRK_ASSERT(logger);
    logger->setRepository(this);
    return add(std::move(logger));
  });
}

LOGLogger* LOGHierarchy::add(std::unique_ptr<LOGLogger> made) {
  const LOGGuard guard(*m_ht);
  const I18NString& name = made->getName();
  LOGObject* const entry = m_ht->get(name);
  if (LOGLogger* const winner = asLogger(entry)) {
    keepUnlisted(std::move(made));
    return winner;
  }

  LOGLogger* const logger = made.get();
  if (entry != nullptr) {
    const std::unique_ptr<LOGProvisionNode> node(static_cast<LOGProvisionNode*>(entry));
    m_ht->replace(name, made.release());
    updateChildren(node.get(), logger);
  } else if (putNew(name, logger)) {
    static_cast<void>(made.release());
  } else {
    LOGLogLog::error("LOGHierrachy::getLogger ---- Could not put Logger in LOGHashtable");
    keepUnlisted(std::move(made));
  }
  updateParents(logger);
  return logger;
}

void LOGHierarchy::keepUnlisted(std::unique_ptr<LOGLogger> logger) {
  const LOGGuard guard(*this);
  m_unlisted.push_back(std::move(logger));
}

bool LOGHierarchy::putNew(const I18NString& name, LOGObject* value) {
  try {
    return m_ht->put(vrkNew<LOGLoggerKey>(VRK_HERE, name), value) != 0;
  } catch (const VRKOutOfMemoryError&) {
    return false;
  }
}

void LOGHierarchy::updateParents(LOGLogger* logger) {
  const I18NString& name = logger->getName();
  for (std::size_t dot = name.findLast("."); dot != I18NString::npos;
       dot = dot == 0 ? I18NString::npos : name.findLast(".", dot - 1)) {
    const I18NString ancestor = name.substring(0, dot);
    LOGObject* const entry = m_ht->get(ancestor);
    if (LOGLogger* const parent = asLogger(entry)) {
      logger->setParent(parent);
      return;
    }
    if (entry != nullptr) {
      static_cast<LOGProvisionNode*>(entry)->push_back(logger);
    } else {
      auto node = std::make_unique<LOGProvisionNode>(logger);
      if (putNew(ancestor, node.get())) static_cast<void>(node.release());
    }
  }
  logger->setParent(m_root.get());
}

void LOGHierarchy::updateChildren(LOGProvisionNode* provisionNode, LOGLogger* parentLogger) {
  VRK_ASSERT(provisionNode);
  VRK_ASSERT(parentLogger);
  for (LOGObject* waiting : *provisionNode) {
    auto* const child = static_cast<LOGLogger*>(waiting);
    LOGLogger* const before = child->getParent();
    // A plain prefix, without a look at the dot, and the root counts by its name: meant so, existing trees rely on it.
    if (before->getName().startsWith(parentLogger->getName())) continue;
    reportLink(*before, *parentLogger);
    parentLogger->setParent(before);
    reportLink(*parentLogger, *child);
    child->setParent(parentLogger);
  }
}

VRKList<LOGLogger*>* LOGHierarchy::getCurrentLoggers() {
  return logReport("LOGHierarchy::getCurrentLoggers -- unable to lock mutex", [&] {
    auto loggers = std::make_unique<VRKList<LOGLogger*>>();
    const LOGGuard guard(*m_ht);
    visitElements(*m_ht, [&](LOGObject* element) {
      if (LOGLogger* const logger = asLogger(element)) loggers->push_back(logger);
    });
    return loggers.release();
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
