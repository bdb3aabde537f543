// The appender that lets another thread do the writing.

#pragma once

#include <atomic>
#include <memory>

#include "log4vrk/appenders/LOGBoundedFIFO.h"
#include "log4vrk/core/LOGAppenderAttachable.h"
#include "log4vrk/core/LOGAppenderAttachableImpl.h"
#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKThread.h"

class LOGDispatcher;
class LOGStatementCall;
struct LOGAppenderList;

/// Puts a copy of each event into a bounded queue, from which a dispatcher thread delivers to the attached appenders. A
/// logging thread pays for the copy, and it waits only while the queue is full. Nothing that was accepted is dropped:
/// close() delivers everything queued, and so does the process's exit(), as far as that takes no longer than about a
/// second. A process that ends in another way loses what is queued.
///
/// Layouts behind the queue print the dispatcher's thread name and context, unless location info is on: then the
/// caller's are fixed before the copy.
///
/// Thread safety: any thread. A logging thread that waits for space holds no lock of the appender.
/// Ownership: attached appenders stay whoever's they are; closing the asynchronous appender closes none of them.
/// Forks: a child starts with an empty queue and a dispatcher of its own; what was queued is the parent's.
class LOG4VRK_EXPORT LOGAsyncAppender : public LOGAppenderSkeleton, public LOGAppenderAttachable {
 public:
  static const I18NString& BUFFER_SIZE_OPTION;    // "BufferSize"
  static const I18NString& LOCATION_INFO_OPTION;  // "LocationInfo"
  static constexpr int DEFAULT_BUFFER_SIZE = 128;

  LOGAsyncAppender();
  LOGAsyncAppender(const LOGAsyncAppender&) = delete;
  LOGAsyncAppender& operator=(const LOGAsyncAppender&) = delete;
  ~LOGAsyncAppender() override;

  /// Starts the dispatcher. Raises VRKAssertError once the appender has been closed: it is not opened again.
  void activateOptions() override;
  void append(LOGLoggingEvent* event) override;
  bool requiresLayout() override { return false; }
  /// Delivers everything that is queued and ends the dispatcher. Called by an attached appender it does not wait for
  /// that.
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

  /// In events, 128 at first. With 0 every event is reported and dropped. Shrink it while the queue is short: see
  /// LOGBoundedFIFO.
  void setBufferSize(int size);
  int getBufferSize();
  /// Not 0: location, thread name and nested context are taken on the logging thread.
  void setLocationInfo(int on) { m_locationInfo = on; }
  int getLocationInfo() const { return m_locationInfo; }
  LOGAppenderAttachableImpl* getAAI() const { return m_aai.get(); }

 private:
  friend class LOGDispatcher;
  friend class LOGDurableAsyncAppender;

  /// Without a queue: the derived class has its own.
  LOG4VRK_HIDDEN LOGAsyncAppender(const I18NString& className, const LOGAppenderInternals& internals);

  LOG4VRK_HIDDEN static const LOGAppenderInternals INTERNALS;

  static bool appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event);
  static bool appendCall(LOGAppenderSkeleton& appender, LOGStatementCall& call);
  /// Returns when what is queued now has been delivered, after ten seconds at the latest; then false.
  static bool drain(LOGAppenderSkeleton& appender);
  /// Whether there is nothing to be done but to put an event into the queue; append() does the rest.
  LOG4VRK_HIDDEN bool takesCalls() const {
    return getFilter() == nullptr && getThreshold() == nullptr && getClosed() == 0 &&
           m_locationInfo.load(std::memory_order_relaxed) == 0 && !m_closing.load(std::memory_order_acquire) &&
           m_forks == VRKThread::forks();
  }
  LOG4VRK_HIDDEN std::shared_ptr<LOGBoundedFIFO> queue();
  LOG4VRK_HIDDEN void enqueue(const LOGLoggingEvent& event);
  LOG4VRK_HIDDEN LOGBoundedFIFO::Outcome waitForSpace(LOGBoundedFIFO& queue, const LOGLoggingEvent& event,
                                                      std::unique_ptr<LOGLoggingEvent>& copy);
  LOG4VRK_HIDDEN void start() VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN std::unique_ptr<LOGDispatcher> takeDispatcher();
  LOG4VRK_HIDDEN std::shared_ptr<const LOGAppenderList> attached();
  static std::shared_ptr<const LOGAppenderList> attachedTo(LOGAppenderSkeleton& appender);
  template <typename Change>
  void remove(Change change);
  template <typename Operation>
  auto withContainer(const char* throwableText, const char* unknownText, Operation operation)
      -> decltype(operation(std::declval<LOGAppenderAttachableImpl&>()));

  // Constant after construction.
  const std::shared_ptr<LOGAppenderAttachableImpl> m_aai;

  // Read by log calls.
  std::atomic<int> m_locationInfo{0};
  std::atomic<int> m_interrupted{0};
  std::atomic<bool> m_closing{false};
  std::atomic<unsigned> m_forks;               // of the process that runs the dispatcher
  std::atomic<LOGBoundedFIFO*> m_bf{nullptr};  // the queue, or null when the dispatcher has finished

  // The queue lives as long as the appender: a log call that has just read m_bf must find a closed queue, not a freed
  // one. A forked child makes another.
  std::shared_ptr<LOGBoundedFIFO> m_queue VRK_GUARDED_BY(m_critSection);
  std::unique_ptr<LOGDispatcher> m_dispatcher VRK_GUARDED_BY(m_critSection);
};
