// The list of appenders that a logger or an asynchronous appender delivers to.

#pragma once

#include <atomic>

#include "log4vrk/core/LOGAppenderAttachable.h"
#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/platform/VRKExport.h"

class LOGHashtable;
class LOGLoggingEvent;
struct LOGAppenderList;

/// Thread safety: not thread-safe. It has a lock for its user to take, and never takes it. Only place() may be read
/// without: see LOGAppenderUse for how the library delivers while others change the appenders.
/// Ownership: never deletes an appender. Of one that the configurator made it keeps a share, so that it lives as long
/// as it is attached.
class LOG4VRK_EXPORT LOGAppenderAttachableImpl : public LOGAppenderAttachable, public LOGMutex {
 public:
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

  /// Where the current list is; null when it is empty.
  const std::atomic<const LOGAppenderList*>& place() const { return m_place; }

 private:
  friend struct LOGAppenderLists;

  template <typename Change>
  void change(Change change);
  LOG4VRK_HIDDEN void unlink(LOGAppenderSkeleton* appender);
  // Made with the first appender, because most loggers have none.
  struct Lists;
  Lists& lists();

  Lists* m_lists = nullptr;  // its own
  std::atomic<const LOGAppenderList*> m_place{nullptr};
};
