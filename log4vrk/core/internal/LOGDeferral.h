// Log calls that application code makes while the library calls it.

#pragma once

#include <cstddef>
#include <deque>
#include <memory>

#include "log4vrk/core/internal/LOGAppenderUse.h"
#include "log4vrk/core/internal/LOGGate.h"

class LOGLogger;
class LOGLoggingEvent;
struct LOGThreadState;

/// An event on its way to the root that has been put off.
struct LOGDeferredEvent {
  LOGLogger* logger;  // whose appenders get it next
  std::unique_ptr<LOGLoggingEvent> event;
  LOGLogger* origin;
  int writes = 0;
};

/// For the life of a scope, log calls made by this thread are put off: application code that the library calls (an
/// appender, a renderer, a listener, a factory) may log, and the events are delivered, in order, when the outermost
/// scope ends and the thread holds no lock. At most 1000 events are put off in one outermost scope; what comes after is
/// dropped with one line in the internal log.
class LOGDeferral {
 public:
  /// What is put off on a thread. The thread's own.
  struct Thread {
    Thread();
    ~Thread();
    void forget();

    int calls = 0;            // how deep the thread is in library calls that may run application code or hold locks
    bool delivering = false;  // what was put off is on its way
    bool hasRest = false;     // there are events or lists
    std::size_t taken = 0;    // events put off since the outermost call began
    std::deque<LOGDeferredEvent> events;
    LOGAppenderUse::Lists lists;  // of appenders, replaced during the call
  };

  LOGDeferral();
  explicit LOGDeferral(LOGThreadState& thread);
  ~LOGDeferral();
  LOGDeferral(const LOGDeferral&) = delete;
  LOGDeferral& operator=(const LOGDeferral&) = delete;

  /// True when the thread is inside a library call, so that a log call has to be put off.
  static bool active();
  /// Keeps a copy of the event, which may be null, for `logger`.
  static void defer(LOGLogger* logger, const LOGLoggingEvent* event);

  /// For its life the thread is one that serves a queue. It delivers what it puts off by deliverPutOff() alone.
  class DispatcherThread {
   public:
    DispatcherThread();
    ~DispatcherThread();
    DispatcherThread(const DispatcherThread&) = delete;
    DispatcherThread& operator=(const DispatcherThread&) = delete;
  };
  /// Delivers what a dispatcher thread has put off, as far as that goes without waiting for anybody. An event that
  /// meets a logger in use keeps its place. True when nothing is left.
  static bool deliverPutOff();
  /// True when the thread has put off something.
  static bool hasPutOff();
  /// True on a thread that serves a queue.
  static bool onDispatcher();
  /// True while such a thread delivers what it has put off.
  static bool mustNotWait();

 private:
  friend class LOGCallScope;

  static void begin(LOGThreadState& thread);
  static void end(LOGThreadState& thread);
  static void finishRest(LOGThreadState& thread);
  static void deliverAll(LOGThreadState& thread);

  LOGThreadState& m_thread;
};
