// The repository: the tree of loggers.

#pragma once

#include <atomic>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "log4vrk/core/LOGDefaultLoggerFactory.h"
#include "log4vrk/core/LOGHashtable.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLoggerRepository.h"
#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/core/LOGRendererMap.h"
#include "log4vrk/core/LOGRendererSupport.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKMutex.h"

class LOGHierarchyEventListener;
class LOGProvisionNode;

/// Finds or makes loggers by their dotted names and links each to its nearest existing ancestor; placeholders stand for
/// ancestors that have not been made. A name may have any length: time and memory grow with it as the name does.
///
/// Thread safety: any thread.
/// Ownership: the loggers, the root included; they live until the repository is destroyed. Listeners are the program's.
class LOG4VRK_EXPORT LOGHierarchy : public LOGMutex, public LOGLoggerRepository, public LOGRendererSupport {
 public:
  /// Takes the root over, unless it raises VRKOutOfMemoryError. The threshold is ALL.
  explicit LOGHierarchy(LOGLogger* root);
  LOGHierarchy(const LOGHierarchy&) = delete;
  LOGHierarchy& operator=(const LOGHierarchy&) = delete;
  /// Closes all appenders before the loggers go.
  ~LOGHierarchy() override;

  /// Warns once in the life of the repository.
  void emitNoAppenderWarning(LOGLogger* logger) override;
  /// The logger of that name, or null; a placeholder does not count.
  LOGLogger* exists(const I18NString& name) override;
  /// A text that names no level is warned about and changes nothing.
  void setThreshold(const I18NString& level) override;
  /// Null changes nothing.
  void setThreshold(LOGLevel* level) override;
  void fireAddAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender) override;
  LOGLevel* getThreshold() override { return m_threshold.load(std::memory_order_acquire); }
  /// The threshold's rank as it was when it was set: a level may be assigned to later.
  int getThresholdRank() const { return m_thresholdRank.load(std::memory_order_relaxed); }
  LOGLogger* getLogger(const I18NString& name) override;
  /// The factory is asked only when there is no logger of that name, and without a lock held: a logger that another
  /// thread made meanwhile goes before. The logger is found and linked by the name asked for, whatever the factory
  /// called it. Raises VRKOutOfMemoryError when there is no memory for the logger.
  LOGLogger* getLogger(const I18NString& name, LOGLoggerFactory* factory) override;
  VRKList<LOGLogger*>* getCurrentLoggers() override;
  LOGRendererMap& getRendererMap() override { return m_rendererMap; }
  LOGLogger* getRootLogger() override { return m_root.get(); }
  /// True when the threshold is above the rank.
  bool isDisabled(long level) override { return getThresholdRank() > level; }
  /// Root back to DEBUG, threshold to ALL, everything closed, all other levels cleared and loggers additive, no
  /// renderers. The appenders stay attached.
  void resetConfiguration() override;
  void setRenderer(LOGObject* renderedClass, LOGObjectRenderer* renderer) override;
  void setRenderer(const I18NString& renderedClassName, LOGObjectRenderer* renderer) override;
  /// Returns when the asynchronous appenders of all loggers have delivered what they had queued: a file that stands
  /// behind one and on a logger of its own is closed with the first that has it, and nothing may come after that.
  void drainAppenders();
  /// Closes the appenders of the root, then those of every other logger, then the configurator and the internal log.
  /// Raises nothing; what one appender raises does not keep the others from being closed.
  void shutdown() override;

  /// Null raises VRKAssertError; the same listener is kept once.
  void addHierarchyEventListener(LOGHierarchyEventListener* listener);

 private:
  LOG4VRK_HIDDEN LOGLogger* find(const I18NString& name);
  LOGLogger* add(const I18NString& name, LOGLogger* made);
  LOG4VRK_HIDDEN void makeRoomFor(const I18NString& name, const LOGLogger* made) VRK_REQUIRES(m_ht->criticalSection());
  LOG4VRK_HIDDEN bool store(const I18NString& name, LOGLogger* logger) VRK_REQUIRES(m_ht->criticalSection());
  LOG4VRK_HIDDEN LOGLogger* updateParents(const I18NString& name, LOGLogger* logger)
      VRK_REQUIRES(m_ht->criticalSection());
  LOG4VRK_HIDDEN bool waitAt(std::u16string_view ancestor, LOGObject* entry, LOGLogger* logger)
      VRK_REQUIRES(m_ht->criticalSection());
  LOG4VRK_HIDDEN void updateChildren(LOGProvisionNode* provisionNode, LOGLogger* parentLogger)
      VRK_REQUIRES(m_ht->criticalSection());
  LOG4VRK_HIDDEN void updateChild(LOGLogger* child, LOGLogger* parentLogger) VRK_REQUIRES(m_ht->criticalSection());
  LOG4VRK_HIDDEN const I18NString& askedName(const LOGLogger* logger) const VRK_REQUIRES(m_ht->criticalSection());
  LOG4VRK_HIDDEN void keepUnlisted(LOGLogger* logger);
  LOG4VRK_HIDDEN void closeAllAppenders();

  // Constant after construction.
  LOGDefaultLoggerFactory m_defaultFactory;
  const std::unique_ptr<LOGHashtable> m_ht;  // guarded by its own lock
  const std::unique_ptr<LOGLogger> m_root;   // behind what may fail, as the root is its maker's until all is well
  LOGRendererMap m_rendererMap;

  // The names that were asked for, of loggers that a factory has named otherwise.
  std::unordered_map<const LOGLogger*, I18NString> m_askedNames VRK_GUARDED_BY(m_ht->criticalSection());
  // Loggers that do not wait in a placeholder at each of their ancestors. They are looked at whenever a logger is made.
  std::vector<LOGLogger*> m_waiting VRK_GUARDED_BY(m_ht->criticalSection());

  // Read by every log call.
  std::atomic<LOGLevel*> m_threshold{LOGLevel::ALL_OBJ};
  std::atomic<int> m_thresholdRank;
  std::atomic<int> m_emittedNoAppenderWarning{0};

  std::vector<LOGHierarchyEventListener*> m_listeners VRK_GUARDED_BY(m_critSection);
  // Loggers that found no room in the table, or their name taken.
  std::vector<std::unique_ptr<LOGLogger>> m_unlisted VRK_GUARDED_BY(m_critSection);
};
