// The base of every appender. To write one of your own, start here: override append() and close().

#pragma once

#include <atomic>
#include <memory>

#include "log4vrk/core/LOGAppender.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/VRKExport.h"

class LOGAppenderBundle;
class LOGLevel;
struct LOGAppenderInternals;
struct LOGFailureTexts;

/// Takes an event through the steps that all appenders share: closed test, threshold, filters, and then the concrete
/// append() under the appender's lock. append() needs no locking of its own, and may log: such log calls are delivered
/// after the outermost one has ended.
///
/// Thread safety: any thread, except that the name is set before the appender is attached.
/// Ownership: layout, filters and threshold are lent. The error handler is owned. An appender made by the program is
/// the program's, which removes it from its loggers before deleting it.
class LOG4VRK_EXPORT LOGAppenderSkeleton : public LOGAppender, public LOGObject, public LOGMutex {
 public:
  LOGAppenderSkeleton();
  ~LOGAppenderSkeleton() override;

  /// Called before every event: must be cheap on an active appender.
  virtual void activateOptions();
  void addFilter(LOGFilter* filter) override;
  /// Writes one event; the lock is held. LOGLoggingEvent::getRenderedMessageUtf8() is its text; see docs/extending.md.
  virtual void append(LOGLoggingEvent* event);
  void clearFilters() override;
  /// Text errors and the library's own go to the internal log and end there; anything else is raised again.
  void doAppend(LOGLoggingEvent* event) override;
  bool requiresLayout() override;
  void close() override;
  /// Takes the handler over and frees the one before. Null changes nothing.
  void setErrorHandler(LOGErrorHandler* handler) override;
  const I18NString& getName() const override;
  void setName(const I18NString& name) override;
  LOGErrorHandler* getErrorHandler() const override;
  LOGLayout* getLayout() const override;
  /// Null changes nothing: a layout can be replaced, never removed.
  void setLayout(LOGLayout* layout) override;
  /// Refused: raises VRKAssertError.
  LOGAppenderSkeleton* clone() const override;

  LOGFilter* getFilter() const { return m_headFilter.load(std::memory_order_acquire); }
  LOGFilter* getFirstFilter() const { return getFilter(); }
  LOGLevel* getThreshold() const { return m_threshold.load(std::memory_order_acquire); }
  void setThreshold(LOGLevel* threshold) { m_threshold.store(threshold, std::memory_order_release); }
  /// Reversed on purpose, existing configurations rely on it: an event passes when the threshold is at least as severe
  /// as the event.
  bool isAsSevereAsThreshold(const LOGLevel* level) const;

  /// Stale appenders are made anew when a configuration next refers to them. There is no way back.
  void markAsStale() { m_stale = 1; }
  bool isStale() const { return m_stale == 1; }

  /// Closes the appender unless it is closed.
  void finalize();

  /// Equal by value: what is compared are class, text, name, closed flag, layout, handler, filters and threshold.
  /// Attaching and removing go by this.
  bool operator==(const LOGObject& other) const override;
  bool operator!=(const LOGObject& other) const override;

 protected:
  /// A copy shares filters, layout and error handler.
  LOGAppenderSkeleton(const LOGAppenderSkeleton& other);
  LOGAppenderSkeleton& operator=(const LOGAppenderSkeleton& other);

  /// doAppend() takes exactly 1 for closed.
  int getClosed() const { return m_closed.load(std::memory_order_acquire); }
  void reportClosed() const;
  void setClosed(int closed) { m_closed.store(closed, std::memory_order_release); }

  /// Replaces the handler without freeing the one before, which goes back to the program that made it.
  void replaceErrorHandler(LOGErrorHandler* handler) VRK_REQUIRES(m_critSection);

 private:
  friend class LOGAppenderBundle;
  friend class LOGAppenderAttachableImpl;
  friend struct LOGAppenderInternals;

  struct HandlerOwner;
  static const LOGFailureTexts APPEND_FAILURES;

  LOG4VRK_HIDDEN std::shared_ptr<LOGErrorHandler> ownerOf(LOGErrorHandler* handler) const;
  LOG4VRK_HIDDEN void storeErrorHandler(LOGErrorHandler* handler) VRK_REQUIRES(m_critSection);
  /// Keeps the handler alive while it is compared, though another thread may replace it.
  LOG4VRK_HIDDEN std::shared_ptr<LOGErrorHandler> errorHandlerShare() const;
  LOG4VRK_HIDDEN bool admits(LOGLoggingEvent* event, LOGFilter* filter) const;
  /// Appends what the filters have to say about events that they denied.
  LOG4VRK_HIDDEN void appendNotices(bool isLast);
  /// The last of it, before the appender is closed. Raises nothing.
  LOG4VRK_HIDDEN void appendLastNotices();
  LOG4VRK_HIDDEN static bool isAccepted(LOGLoggingEvent* event, LOGFilter* filter);
  LOG4VRK_HIDDEN void copyFrom(const LOGAppenderSkeleton& other);

  // Keeps what threads only read out of the cache line of the lock, which changes hands with every event.
  const char m_distance[64] = {};

  // Constant while the appender is attached.
  const LOGAppenderInternals* m_internals = nullptr;
  I18NString m_name;
  std::weak_ptr<LOGAppenderBundle> m_bundle;

  // Read without the lock.
  std::atomic<int> m_closed{0};
  std::atomic<int> m_stale{0};
  std::atomic<LOGFilter*> m_headFilter{nullptr};
  std::atomic<LOGFilter*> m_tailFilter{nullptr};
  std::atomic<LOGLayout*> m_layout{nullptr};
  std::atomic<LOGLevel*> m_threshold{nullptr};
  std::atomic<LOGErrorHandler*> m_errorHandler{nullptr};

  mutable VRKMutex m_handlerMutex;
  std::shared_ptr<LOGErrorHandler> m_ownedErrorHandler VRK_GUARDED_BY(m_handlerMutex);
};
