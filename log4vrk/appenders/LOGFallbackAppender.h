// The appender that has others to fall back on.

#pragma once

#include <chrono>
#include <memory>
#include <vector>

#include "log4vrk/core/LOGAppenderAttachable.h"
#include "log4vrk/core/LOGAppenderAttachableImpl.h"
#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/platform/VRKExport.h"

struct LOGAppenderList;

/// Gives each event to the first of the attached appenders that takes it, in the order in which they were attached. One
/// that does not is passed over for the retry delay, then it is tried again, with the next event. When none of the
/// others takes an event, those that are passed over are tried as well: an event is lost only when no appender takes
/// it. The internal log says when an appender is given up, when it is back, and when events are lost.
///
/// An appender takes an event unless it is closed, cannot open its file, fails to write, has no layout though it needs
/// one, or raises an error. What is behind a queue, a buffer or a datagram may still be lost: a queue takes an event
/// when it has put it in, a file with BufferedIO when it has collected it, and datagrams are taken by the system. An
/// event that an appender's own filters deny has found its end there.
///
/// Thread safety: any thread; events are delivered one after another.
/// Ownership: attached appenders stay whoever's they are; closing this one closes none of them.
class LOG4VRK_EXPORT LOGFallbackAppender : public LOGAppenderSkeleton, public LOGAppenderAttachable {
 public:
  static constexpr long DEFAULT_RETRY_DELAY = 10000;

  LOGFallbackAppender();
  LOGFallbackAppender(const LOGFallbackAppender&) = delete;
  LOGFallbackAppender& operator=(const LOGFallbackAppender&) = delete;
  ~LOGFallbackAppender() override;

  void append(LOGLoggingEvent* event) override VRK_REQUIRES(m_critSection);
  /// For good.
  void close() override;

  // The attached appenders. An appender from which this one can be reached is not added, and neither is this one: such
  // a ring would feed itself.
  void addAppender(LOGAppenderSkeleton* newAppender) override;
  VRKListIterator<LOGAppenderSkeleton*> getAllAppenders() override;
  LOGAppenderSkeleton* getAppender(const I18NString& name) override;
  bool isAttached(LOGAppenderSkeleton* appender) override;
  /// Closes them first.
  void removeAllAppenders() override;
  void removeAppender(LOGAppenderSkeleton* appender) override;
  void removeAppender(const I18NString& name) override;

  /// In milliseconds; with 0 each event is offered to all.
  void setRetryDelay(long milliseconds);
  long getRetryDelay() const;

 private:
  /// An appender that did not take an event.
  struct Out {
    const LOGAppenderSkeleton* appender;
    std::chrono::steady_clock::time_point since;
    bool isTried;  // with the event that is being delivered
  };

  LOG4VRK_HIDDEN static const LOGAppenderInternals INTERNALS;

  static bool appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event);
  static bool drain(LOGAppenderSkeleton& appender);
  static std::shared_ptr<const LOGAppenderList> attachedTo(LOGAppenderSkeleton& appender);
  static bool isTakenBy(LOGAppenderSkeleton& appender, LOGLoggingEvent* event);
  LOG4VRK_HIDDEN bool isTakenByAny(const LOGAppenderList& list, LOGLoggingEvent* event) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN bool offer(LOGAppenderSkeleton& appender, LOGLoggingEvent* event) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN Out* find(const LOGAppenderSkeleton& appender) VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN bool isStillAttached(const LOGAppenderSkeleton& appender, const LOGAppenderList& list) const
      VRK_REQUIRES(m_critSection);
  template <typename Change>
  void remove(Change change);

  LOGAppenderAttachableImpl m_appenders VRK_GUARDED_BY(m_critSection);
  std::vector<Out> m_out VRK_GUARDED_BY(m_critSection);
  std::chrono::milliseconds m_retryDelay VRK_GUARDED_BY(m_critSection){DEFAULT_RETRY_DELAY};
  bool m_lossSaid VRK_GUARDED_BY(m_critSection) = false;
};
