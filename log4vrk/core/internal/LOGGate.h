// The gate that lets a configuration run or a fork see the whole process at rest.

#pragma once

#include "log4vrk/platform/VRKExport.h"

class LOGLogger;
struct LOGThreadState;

/// Whoever holds a lock of a library object is inside the gate. Going in and out costs one store to a flag of the
/// thread's own each way; no cache line is shared between threads, and the barriers are paid by who closes the gate.
///
/// Dispatcher threads have a gate of their own, which only a fork closes: those whom a closure waits for may wait for a
/// dispatcher to make space in its queue.
///
/// A Closure waits until nobody else is inside and keeps the others out for its life. It is how a configuration run
/// changes the loggers in one step, as seen by those who log, and how a fork is sure that no other thread holds a lock.
/// Waiting is bounded on both sides: when threads wait for each other through locks of the program, a configuration
/// that is seen half-way is better than a process that hangs. No memory is at risk then, since every object has its
/// lock.
class LOGGate {
 public:
  /// Inside for the life of a scope. May nest.
  class LOG4VRK_EXPORT Pass {
   public:
    Pass();
    explicit Pass(LOGThreadState& thread);
    ~Pass();
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

   private:
    LOGThreadState& m_thread;
  };

  /// Tries to be inside without waiting, as a dispatcher thread has to.
  class TryPass {
   public:
    TryPass();
    ~TryPass();
    TryPass(const TryPass&) = delete;
    TryPass& operator=(const TryPass&) = delete;

    bool isInside() const { return m_inside; }

   private:
    LOGThreadState& m_thread;
    bool m_inside;
  };

  /// The gate closed for the life of a scope; the thread itself passes freely. May nest on one thread. Not to be made
  /// inside.
  class Closure {
   public:
    Closure();
    ~Closure();
    Closure(const Closure&) = delete;
    Closure& operator=(const Closure&) = delete;
  };

  /// The gate closed to everybody else, dispatchers too, for the life of a scope. It does nothing on a thread that is
  /// inside.
  class FullClosure {
   public:
    FullClosure();
    ~FullClosure();
    FullClosure(const FullClosure&) = delete;
    FullClosure& operator=(const FullClosure&) = delete;

   private:
    const bool m_closed;
  };

  /// Waits until no other thread uses an appender of `logger` without its lock, of those that do already. False when
  /// that takes too long for a thread that is inside itself: it may hold what they wait for.
  static bool waitForBorrowers(const LOGLogger& logger);

  /// Makes sure that forks are looked after. Called by whoever registers a preparation that has to come before the
  /// gate's own.
  static void watchForks();
};
