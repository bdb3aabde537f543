// The named entry point through which a program logs. Start here.

#pragma once

#include <atomic>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "log4vrk/core/LOGAppenderAttachableImpl.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/core/internal/LOGLoggerName.h"
#include "log4vrk/core/internal/LOGText.h"
#include "log4vrk/platform/VRKExport.h"

class LOGHashtable;
class LOGLoggerFactory;
class LOGLoggerRepository;
class LOGLoggingEvent;
class LOGMessage;
struct LOGAppenderList;
struct LOGDeferredEvent;
struct LOGPackedText;
struct LOGSourceLocation;
struct LOGThreadState;

/// A logger belongs to a tree of dotted names: "shop.orders" is below "shop", and all are below the root. It has a
/// level of its own or inherits that of the nearest ancestor that has one. An event goes to the logger's appenders and
/// to those of each ancestor, up to and including the first logger that is not additive.
///
///   LOGLogger* logger = LOGManager::getLogger("shop.orders");
///   logger->info("order accepted");
///
/// Thread safety: any thread. Reading a logger and setting its level or additivity never wait for a delivery.
/// Ownership: loggers are the repository's and live as long as it does. A message is the caller's; an event clones it.
/// Failures: log calls raise nothing but the assertions that their descriptions name; what goes wrong while logging is
/// written to the internal log. The other operations write their line and raise the error again.
class LOG4VRK_EXPORT LOGLogger : public LOGMutex, public LOGAppenderAttachable, public LOGObject {
 public:
  static const I18NString& m_FQCN;  ///< "LOGLogger"

  /// A logger without a name.
  LOGLogger();
  /// A program gets its loggers from LOGManager; a factory uses this.
  explicit LOGLogger(const I18NString& name);
  ~LOGLogger() override;

  /// The operation of LOGManager that has this name.
  /// @{
  static LOGLogger* getLogger(const I18NString& name);
  static LOGLogger* getLogger(const I18NString& name, LOGLoggerFactory* factory);
  static LOGLogger* getRootLogger();
  static LOGLogger* exists(const I18NString& name);
  static void shutdown();
  /// @}

  /// Logs a message at the level of the name. Without a repository the level decides alone. A text is a const char*,
  /// std::string or std::string_view, which are UTF-8, or one of their relatives in UTF-16 and of wide characters. It
  /// is converted only when the level is enabled.
  /// @{
  void debug(LOGObject* message) { logShortcut(LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ, message); }
  void info(LOGObject* message) { logShortcut(LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ, message); }
  void warn(LOGObject* message) { logShortcut(LOGLevel::WARN_RANK, LOGLevel::WARN_OBJ, message); }
  void error(LOGObject* message) { logShortcut(LOGLevel::ERROR_RANK, LOGLevel::ERROR_OBJ, message); }
  void fatal(LOGObject* message) { logShortcut(LOGLevel::FATAL_RANK, LOGLevel::FATAL_OBJ, message); }
  void debug(const I18NString& text) { debug(text.view()); }
  void info(const I18NString& text) { info(text.view()); }
  void warn(const I18NString& text) { warn(text.view()); }
  void error(const I18NString& text) { error(text.view()); }
  void fatal(const I18NString& text) { fatal(text.view()); }
  template <typename Text>
  LOGIfText<Text> debug(const Text& text) {
    logShortcut(LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ, logTextOf(text));
  }
  template <typename Text>
  LOGIfText<Text> info(const Text& text) {
    logShortcut(LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ, logTextOf(text));
  }
  template <typename Text>
  LOGIfText<Text> warn(const Text& text) {
    logShortcut(LOGLevel::WARN_RANK, LOGLevel::WARN_OBJ, logTextOf(text));
  }
  template <typename Text>
  LOGIfText<Text> error(const Text& text) {
    logShortcut(LOGLevel::ERROR_RANK, LOGLevel::ERROR_OBJ, logTextOf(text));
  }
  template <typename Text>
  LOGIfText<Text> fatal(const Text& text) {
    logShortcut(LOGLevel::FATAL_RANK, LOGLevel::FATAL_OBJ, logTextOf(text));
  }
  /// @}

  /// Logs at a level that is known at run time only. Does nothing without a repository; with one, a null level raises
  /// VRKAssertError.
  /// @{
  void log(LOGLevel* level, LOGObject* message);
  void log(LOGLevel* level, const I18NString& text) { log(level, text.view()); }
  template <typename Text>
  LOGIfText<Text> log(LOGLevel* level, const Text& text) {
    if (isEnabledFor(level)) logText(m_FQCN, level, logTextOf(text));
  }
  /// @}
  /// Logs the resource bundle string, or the key when there is none, under the rules of log(). The parameter is not
  /// used.
  /// @{
  void l7dlog(LOGLevel* level, const I18NString& key);
  void l7dlog(LOGLevel* level, const I18NString& key, LOGObject* parameter);
  template <typename Text>
  LOGIfText<Text> l7dlog(LOGLevel* level, const Text& key, LOGObject* parameter = nullptr) {
    if (isEnabledFor(level)) l7dlog(level, I18NString(logTextOf(key)), parameter);
  }
  /// @}
  /// Logs at ERROR when `assertion` is 0.
  /// @{
  void assertLog(int assertion, const I18NString& text) { assertLog(assertion, text.view()); }
  template <typename Text>
  LOGIfText<Text> assertLog(int assertion, const Text& text) {
    if (assertion == 0) error(text);
  }
  /// @}
  /// Logs without asking whether the level is enabled. `fqn` is kept as the name of the class that logs.
  /// @{
  void forcedLog(const I18NString& fqn, LOGLevel* level, LOGObject* message);
  void forcedLog(const I18NString& fqn, LOGLevel* level, const I18NString& text) { forcedLog(fqn, level, text.view()); }
  template <typename Text>
  LOGIfText<Text> forcedLog(const I18NString& fqn, LOGLevel* level, const Text& text) {
    logText(fqn, level, logTextOf(text));
  }
  /// @}
  /// Logs what was put together with <<, and where the statement stands, without asking whether the level is enabled.
  /// `place` may be null. It has to stay as long as events that carry it.
  void forcedLog(LOGLevel* level, const LOGMessage& message, const LOGSourceLocation* place = nullptr);

  /// For the macros, which have asked already. `bytes` are UTF-8, or meant to be; `fields` are names with values.
  /// @{
  void logStatement(LOGLevel* level, std::string_view bytes, const LOGSourceLocation* place);
  void logStatement(LOGLevel* level, std::string_view bytes, const LOGSourceLocation* place, std::string_view fields);
  /// @}
  /// For the macros. The text is put together when somebody needs it: behind a queue, by the queue's thread.
  void logStatement(LOGLevel* level, const LOGPackedText& text, const LOGSourceLocation* place);

  /// Whether a log call at this level would write. False without a repository; with one, a null level raises
  /// VRKAssertError.
  bool isEnabledFor(LOGLevel* level) const {
    return level != nullptr ? isEnabledFor(rankOf(level), level) : findOutIfEnabledFor(level);
  }
  /// As above, for a level whose rank the compiler knows.
  [[gnu::always_inline]] bool isEnabledFor(int rank, LOGLevel* level) const {
    const std::int32_t lowest = m_lowestEnabled.load(std::memory_order_relaxed);
    return rank >= lowest && (lowest != NOT_YET_KNOWN || findOutIfEnabledFor(level));
  }
  /// isEnabledFor() the level of the name.
  /// @{
  bool isDebugEnabled() const { return isEnabledFor(LOGLevel::DEBUG_RANK, LOGLevel::DEBUG_OBJ); }
  bool isInfoEnabled() const { return isEnabledFor(LOGLevel::INFO_RANK, LOGLevel::INFO_OBJ); }
  /// @}

  /// Delivers to the appenders of this logger and its ancestors. Put off when it is called from inside a library call.
  void callAppenders(LOGLoggingEvent* event);

  /// The name with all its dots. The reference is valid as long as the logger.
  /// @{
  const I18NString& getName() const { return m_name.get()->text; }
  const std::string& getNameUtf8() const { return m_name.get()->utf8; }
  /// @}
  /// The logger's own copy of the level last set, valid as long as the logger; null inherits.
  LOGLevel* getLevel() const { return m_level.load(std::memory_order_acquire); }
  /// Keeps a copy of the level. Null inherits from now on.
  virtual void setLevel(LOGLevel* level);
  /// The level in force: the first on the way up.
  LOGLevel* getChainedLevel() const;
  /// The nearest ancestor that exists, null for the root.
  LOGLogger* getParent() const { return m_parent.load(std::memory_order_acquire); }
  /// For the repository, which keeps the tree.
  void setParent(LOGLogger* parent) {
    m_parent.store(parent, std::memory_order_release);
    noteLevelChange();
  }
  /// 1 at first.
  int getAdditivity() const { return m_additive.load(std::memory_order_relaxed); }
  /// 0 keeps events from the ancestors' appenders.
  void setAdditivity(int additive) { m_additive.store(additive, std::memory_order_relaxed); }
  /// The repository that has made the logger, or null.
  LOGLoggerRepository* getRepository() const { return m_repository.load(std::memory_order_acquire); }
  /// For the repository.
  void setRepository(LOGLoggerRepository* repository) {
    m_repository.store(repository, std::memory_order_release);
    noteLevelChange();
  }
  /// Always empty: there are no resource bundles.
  const I18NString& getResourceBundleString(const I18NString& /*key*/) const { return m_resourceBundleString; }

  /// Attaches an appender, which stays the program's. One that is equal to an attached one is not attached again.
  void addAppender(LOGAppenderSkeleton* appender) override;
  /// Those attached to this logger itself, in their order. Walks the living list.
  VRKListIterator<LOGAppenderSkeleton*> getAllAppenders() override;
  /// The first attached appender of that name, or null.
  LOGAppenderSkeleton* getAppender(const I18NString& name) override;
  /// Whether this logger itself has an appender that is equal.
  bool isAttached(LOGAppenderSkeleton* appender) override;

  /// Closes all appenders of this logger, in order, and removes them. No lock is held meanwhile. removeAppender() says
  /// when the program may delete them.
  /// @{
  void removeAllAppenders() override;
  void removeAllAppenders(LOGHashtable* table);
  /// @}
  /// Removes the appender and what equals it, or the first of that name, and closes none. When this returns, no
  /// delivery that began before it uses the appender any more, and the program may delete what is its own. Later
  /// deliveries are not waited for. From inside a library call (an appender, a renderer, a listener) it returns at
  /// once: then the program deletes the appender when the outermost call on the thread has returned. On the thread of a
  /// queue that is when the queue has been closed.
  /// @{
  void removeAppender(LOGAppenderSkeleton* appender) override;
  void removeAppender(const I18NString& name) override;
  /// @}
  /// Closes all appenders, in order. No lock is held meanwhile.
  void closeNestedAppenders();

  /// Refused: raises VRKAssertError.
  LOGObject* clone() const override;

  using LOGObject::operator==;
  using LOGObject::operator!=;
  /// Loggers are equal when their names are.
  /// @{
  bool operator==(const LOGLogger& other) const { return getName() == other.getName(); }
  bool operator!=(const LOGLogger& other) const { return !(*this == other); }
  /// @}

 protected:
  /// Has name, additivity, level and appenders of the other.
  LOGLogger(const LOGLogger& other);

 private:
  friend class LOGDeferral;
  friend class LOGHierarchy;
  friend class LOGLoggingEvent;

  /// The value of m_lowestEnabled until somebody asks. It is below all ranks but one, so that the one comparison that
  /// turns disabled calls away lets every call through to find out. That one, of ALL, counts as the next.
  static constexpr std::int32_t NOT_YET_KNOWN = std::numeric_limits<std::int32_t>::min();
  static int rankOf(const LOGLevel* level) {
    return level->toInt() > NOT_YET_KNOWN ? level->toInt() : NOT_YET_KNOWN + 1;
  }

  /// Has every logger forget what is enabled. For every change that can alter it, and before a logger is freed, because
  /// it is in the list of those that know.
  static void noteLevelChange();
  [[gnu::cold]] bool findOutIfEnabledFor(LOGLevel* level) const;
  LOG4VRK_HIDDEN void keepLowestEnabled() const;

  /// The test of debug() to fatal(): the level is not null, and without a repository it decides alone.
  [[gnu::always_inline]] bool passes(int rank, LOGLevel* level) const {
    const std::int32_t lowest = m_lowestEnabled.load(std::memory_order_relaxed);
    return rank >= lowest && (lowest != NOT_YET_KNOWN || findOutIfPasses(level));
  }
  [[gnu::cold]] bool findOutIfPasses(LOGLevel* level) const;
  void logShortcut(int rank, LOGLevel* level, LOGObject* message) {
    if (passes(rank, level)) forcedLog(m_FQCN, level, message);
  }
  template <typename View>
  void logShortcut(int rank, LOGLevel* level, View text) {
    if (passes(rank, level)) logText(m_FQCN, level, text);
  }
  void logText(const I18NString& fqn, LOGLevel* level, std::string_view utf8);
  void logText(const I18NString& fqn, LOGLevel* level, std::u16string_view utf16);
  void logText(const I18NString& fqn, LOGLevel* level, std::wstring_view wide);
  void logUtf8(const I18NString& fqn, LOGLevel* level, std::string_view utf8, const LOGSourceLocation* place,
               std::string_view fields = {});
  /// callAppenders() for callers that have nobody to raise an error to.
  LOG4VRK_HIDDEN void deliver(LOGLoggingEvent* event);
  template <typename Call>
  void callEach(Call& call);
  template <typename Call>
  int walk(Call& call, LOGThreadState& thread);
  template <typename Call>
  int append(Call& call, LOGThreadState& thread);
  /// Goes on with the delivery of an event that was put off, on a dispatcher thread. False when a logger is in use.
  LOG4VRK_HIDDEN static bool deliverOn(LOGDeferredEvent& putOff);
  /// False when another thread delivers through this logger.
  LOG4VRK_HIDDEN bool tryAppend(LOGLoggingEvent* event, int& writes);
  LOG4VRK_HIDDEN void drainAppenders();
  struct Appenders;  // the steps of the operations that change them
  /// Where the current list of appenders is, for those who deliver.
  const std::atomic<const LOGAppenderList*>& appenders() const VRK_NO_THREAD_SAFETY_ANALYSIS { return m_aai.place(); }
  LOG4VRK_HIDDEN LOGLevel* keptLevel(const LOGLevel& level) VRK_REQUIRES(m_critSection);

  // Constant after construction.
  const LOGLoggerName::Share m_name;
  const I18NString m_resourceBundleString;

  // Read by every log call, without the lock.
  mutable std::atomic<std::int32_t> m_lowestEnabled{NOT_YET_KNOWN};  // the lowest rank that is enabled
  std::atomic<LOGLevel*> m_level{nullptr};
  std::atomic<LOGLogger*> m_parent{nullptr};
  std::atomic<LOGLoggerRepository*> m_repository{nullptr};
  std::atomic<int> m_additive{1};

  // Held while the appenders append, so that all of them get the events in one order. A single appender orders them
  // itself, and the fast path, which is for a single appender, does without. It is not the lock of the object: that one
  // is held for a moment only, since a thread that delivers may ask any logger for what it holds.
  VRKThreadCriticalSection m_order{0};
  LOGAppenderAttachableImpl m_aai VRK_GUARDED_BY(m_critSection);
  // Its own copies of all levels that were ever set: log calls and queued events may still point to one.
  std::vector<LOGLevel*> m_levels VRK_GUARDED_BY(m_critSection);
};
