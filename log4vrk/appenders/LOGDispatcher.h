// The thread that delivers what an asynchronous appender has queued.

#pragma once

#include <atomic>
#include <memory>

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKThread.h"

class LOGAppenderAttachableImpl;
class LOGAsyncAppender;
class LOGBoundedFIFO;
struct LOGAppenderList;
struct LOGThreadState;

/// Takes events from a queue and hands each to the appenders of a container. It looks again and again; nobody wakes it.
/// What an appender raises is written to the internal log, and the thread goes on.
///
/// Log calls made by what it calls are put off and delivered between events, without ever waiting for a logger or for
/// space in a queue: whoever holds the logger may be waiting for this thread.
///
/// Thread safety: any thread; close() from any but its own.
/// Ownership: it deletes the events. Queue and container are shared with the appender, and live as long as the thread.
class LOG4VRK_EXPORT LOGDispatcher : public VRKThread {
 public:
  /// The appender must have no other dispatcher. A null appender raises VRKAssertError.
  LOGDispatcher(std::shared_ptr<LOGBoundedFIFO> queue, LOGAsyncAppender* container);
  ~LOGDispatcher() override;

  void run() override;
  /// Has the thread deliver everything that is queued, and waits until it has ended.
  void close();
  /// The same without waiting; the object deletes itself. For the dispatcher's own thread.
  void closeItself();
  /// True on the dispatcher's own thread.
  bool isItself() const { return m_threadId == VRKThread::currentThreadId(); }

 private:
  static std::shared_ptr<LOGAppenderAttachableImpl> containerOf(LOGAsyncAppender* m_container);
  /// False when the queue is empty.
  LOG4VRK_HIDDEN bool deliverSome();
  LOG4VRK_HIDDEN LOGLoggingEvent* next();
  LOG4VRK_HIDDEN void deliver(LOGLoggingEvent* event, const LOGAppenderList& list, LOGThreadState& thread);

  const std::shared_ptr<LOGBoundedFIFO> m_bf;
  const std::shared_ptr<LOGAppenderAttachableImpl> m_container;
  std::unique_ptr<LOGLoggingEvent> m_object;  // the event in delivery, when it came as an object
  LOGLoggingEvent m_event;                    // the event in delivery otherwise; one memory for all
  std::atomic<long> m_threadId{0};
  std::atomic<int> m_interrupted{0};
  std::atomic<bool> m_deletesItself{false};
};
