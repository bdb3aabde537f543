// The list of appenders that a logger or an asynchronous appender delivers to.

#pragma once

#include <atomic>
#include <vector>

#include "log4vrk/core/LOGAppenderAttachable.h"
#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/platform/VRKExport.h"

class LOGHashtable;
class LOGLoggingEvent;

/// Thread safety: not thread-safe. It has a lock for its user to take, and never takes it.
/// Ownership: never deletes an appender. Of one that the configurator made it keeps a share, so that it lives as long
/// as it is attached.
class LOG4VRK_EXPORT LOGAppenderAttachableImpl : public LOGAppenderAttachable, public LOGMutex {
 public:
  struct Attached;  // core/internal/LOGAttached.h
  /// Keeps alive what it lists, as far as that is shared.
  using Snapshot = std::vector<Attached>;

  LOGAppenderAttachableImpl();
  LOGAppenderAttachableImpl(const LOGAppenderAttachableImpl& other);
  LOGAppenderAttachableImpl& operator=(const LOGAppenderAttachableImpl&) = delete;
  ~LOGAppenderAttachableImpl() override;

  /// At the end, unless an equal appender is in the list. Null raises VRKAssertError.
  void addAppender(LOGAppenderSkeleton* newAppender) override;
  VRKListIterator<LOGAppenderSkeleton*> getAllAppenders() override;
  LOGAppenderSkeleton* getAppender(const I18NString& name) override;
  bool isAttached(LOGAppenderSkeleton* appender) override;
  void removeAllAppenders() override;
  void removeAppender(LOGAppenderSkeleton* appender) override;
  void removeAppender(const I18NString& name) override;

  /// Closes all, marks those stale that `table` (may be null) holds under their name, and empties the list.
  void removeAllAppenders(LOGHashtable* table);
  /// Has each appender activate its options and then append the event. Returns how many there are.
  int appendLoopOnAppenders(LOGLoggingEvent* event);
  /// The one thing to ask without the lock. False is the answer as of some moment during the call.
  bool mayHaveAppenders() const { return m_any.load(std::memory_order_acquire); }
  /// The only appender, when it takes plain events without locks, else null. To be asked without the lock by whoever
  /// sees to it that the appender lives until the event is written.
  LOGAppenderSkeleton* onlyPlainAppender() const { return m_onlyPlain.load(); }

  /// For its life, on a dispatcher thread and under the lock, the attached appenders may hold back what the thread
  /// appends.
  class HoldingBack {
   public:
    explicit HoldingBack(LOGAppenderAttachableImpl& container);
    ~HoldingBack();
    HoldingBack(const HoldingBack&) = delete;
    HoldingBack& operator=(const HoldingBack&) = delete;

    /// Whether there are appenders and all of them do.
    bool all() const { return m_all; }

   private:
    LOGAppenderAttachableImpl& m_container;
    bool m_all;
  };

  // The steps of removeAllAppenders for a user who must not hold a lock while appenders close.
  Snapshot snapshot() const;
  /// Closes every one, then raises what the first failure raised.
  static void closeAll(const Snapshot& appenders);
  /// Marks and unlinks what is in `appenders`; what was attached since stays.
  void forget(const Snapshot& appenders, LOGHashtable* table);

 private:
  void unlink(LOGAppenderSkeleton* appender);
  void publish();

  // Made with the first appender: most loggers have none.
  struct Lists;
  Lists& lists();
  const Snapshot& attached() const;

  Lists* m_lists = nullptr;  // its own
  int m_loops = 0;
  bool m_holdsBack = false;

  // What is asked without the lock.
  std::atomic<bool> m_any{false};
  std::atomic<LOGAppenderSkeleton*> m_onlyPlain{nullptr};
};
