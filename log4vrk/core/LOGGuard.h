// How a thread comes into the library: through the gate, with its own log calls put off, and with an object's lock.

#pragma once

#include <memory>

#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/core/internal/LOGGate.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKMutex.h"

class LOGLogger;
class LOGLoggingEvent;
struct LOGThreadState;

/// For the life of a scope, log calls made by this thread are put off: application code that the library calls (an
/// appender, a renderer, a listener, a factory) may log, and the events are delivered, in order, when the outermost
/// scope ends and the thread holds no lock. At most 1000 events are put off in one outermost scope; what comes after is
/// dropped with one line in the internal log.
class LOG4VRK_EXPORT LOGDeferral {
 public:
  LOGDeferral();
  explicit LOGDeferral(LOGThreadState& thread);
  ~LOGDeferral();
  LOGDeferral(const LOGDeferral&) = delete;
  LOGDeferral& operator=(const LOGDeferral&) = delete;

  /// True when the thread is inside a library call, so that a log call has to be put off.
  static bool active();
  /// Keeps a copy of the event for `logger`.
  static void defer(LOGLogger* logger, const LOGLoggingEvent& event);

  /// Keeps `share` until the outermost scope of the thread has ended, and other threads have let go of the appenders of
  /// `logger`.
  static void depart(const LOGLogger& logger, std::shared_ptr<const void> share);

  /// For its life the thread is one that serves a queue. What it puts off is delivered by deliverPutOff() alone.
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
  /// True while a dispatcher thread delivers what it has put off.
  static bool mustNotWait();

 private:
  static void finishRest(LOGThreadState& thread);
  static void deliverAll(LOGThreadState& thread);

  LOGThreadState& m_thread;
};

/// A library call that may run application code: log calls put off, inside the gate.
class LOG4VRK_EXPORT LOGCallScope {
 public:
  LOGCallScope();
  ~LOGCallScope();
  LOGCallScope(const LOGCallScope&) = delete;
  LOGCallScope& operator=(const LOGCallScope&) = delete;

 private:
  explicit LOGCallScope(LOGThreadState& thread);

  LOGDeferral m_deferral;  // first: it delivers after the gate has been left
  LOGGate::Pass m_pass;
};

/// A library call that holds one of the library's own locks for a few instructions, inside the gate.
class VRK_SCOPED_CAPABILITY LOGLeafGuard {
 public:
  explicit LOGLeafGuard(VRKMutex& mutex) VRK_ACQUIRE(mutex) : m_guard(mutex) {}
  ~LOGLeafGuard() VRK_RELEASE() {}
  LOGLeafGuard(const LOGLeafGuard&) = delete;
  LOGLeafGuard& operator=(const LOGLeafGuard&) = delete;

 private:
  LOGGate::Pass m_pass;
  VRKMutexGuard m_guard;
};

/// A library call that holds the lock of an object.
class LOG4VRK_EXPORT VRK_SCOPED_CAPABILITY LOGGuard {
 public:
  /// Raises what the lock raises.
  explicit LOGGuard(const LOGMutex& owner) VRK_ACQUIRE(owner.criticalSection()) : m_guard(owner.criticalSection()) {}
  ~LOGGuard() VRK_RELEASE() {}
  LOGGuard(const LOGGuard&) = delete;
  LOGGuard& operator=(const LOGGuard&) = delete;

 private:
  LOGCallScope m_scope;  // first: it ends after the lock is free
  VRKThreadGuard m_guard;
};

/// The same without waiting: it holds the lock only when no other thread does.
class LOGTryGuard {
 public:
  explicit LOGTryGuard(const LOGMutex& owner) VRK_NO_THREAD_SAFETY_ANALYSIS : m_section(owner.criticalSection()),
                                                                              m_holds(m_section.tryLock()) {}
  ~LOGTryGuard() VRK_NO_THREAD_SAFETY_ANALYSIS {
    if (m_holds) m_section.unlock();
  }
  LOGTryGuard(const LOGTryGuard&) = delete;
  LOGTryGuard& operator=(const LOGTryGuard&) = delete;

  bool holds() const { return m_holds; }

 private:
  LOGCallScope m_scope;  // first: it ends after the lock is free
  VRKThreadCriticalSection& m_section;
  const bool m_holds;
};
