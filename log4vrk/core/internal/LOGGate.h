// The gate that lets a configuration run or a fork see the whole process at rest.

#pragma once

#include <atomic>
#include <chrono>

#include "log4vrk/platform/VRKExport.h"

struct LOGThreadState;

/// Whoever holds a lock of a library object is inside the gate. Going in and out costs one store each way to a flag of
/// the thread's own: no cache line is shared between threads, and whoever closes the gate pays for the barriers.
///
/// There are two ways in. Log calls and everything else go in by the front, which a configuration run closes. Threads
/// that serve a queue go in by the back, which only a fork closes: those whom a closure waits for may themselves wait
/// for such a thread, to make space in its queue.
///
/// A Closure waits until nobody else is inside and keeps the others out for its life. It is how a configuration run
/// changes the loggers in one step, as seen by those who log, and how a fork is sure that no other thread holds a lock.
/// Waiting is bounded on both sides: when threads wait for each other through locks of the program, a configuration
/// that is seen half-way is better than a process that hangs. No memory is at risk then, since every object has its
/// lock.
class LOGGate {
 public:
  /// What the gate knows of a thread. The first three members are the thread's own.
  struct Thread {
    int passes = 0;       // how often the thread is inside
    bool serves = false;  // a queue; it goes in by the back
    bool atBack = false;  // the way by which it has gone in
    std::atomic<bool> inFront{false}, inBack{false};

    std::atomic<bool>& flag() { return atBack ? inBack : inFront; }
    void forget() { passes = 0, serves = atBack = false; }
  };

  /// Inside for the life of a scope. May nest.
  class LOG4VRK_EXPORT Pass {
   public:
    Pass();
    explicit Pass(LOGThreadState& thread);
    ~Pass();
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

   private:
    Thread& m_thread;
  };

  /// Tries to go in by the front without waiting, as a thread that serves a queue has to. Not to be made inside.
  class TryPass {
   public:
    TryPass();
    ~TryPass();
    TryPass(const TryPass&) = delete;
    TryPass& operator=(const TryPass&) = delete;

    bool isInside() const { return m_inside; }

   private:
    Thread& m_thread;
    bool m_inside;
  };

  /// The front closed for the life of a scope; the thread itself passes freely. May nest on one thread. Not to be made
  /// inside.
  class Closure {
   public:
    Closure();
    ~Closure();
    Closure(const Closure&) = delete;
    Closure& operator=(const Closure&) = delete;
  };

  /// Front and back closed to everybody else for the life of a scope. It does nothing on a thread that is inside. At
  /// `until` it waits for the others no longer.
  class FullClosure {
   public:
    explicit FullClosure(std::chrono::steady_clock::time_point until);
    ~FullClosure();
    FullClosure(const FullClosure&) = delete;
    FullClosure& operator=(const FullClosure&) = delete;

   private:
    const bool m_closed;
  };

  /// Makes sure that forks are looked after. Called by whoever registers a preparation that has to come before the
  /// gate's own.
  static void watchForks();

 private:
  friend class LOGCallScope;

  static void goIn(Thread& thread);
  static void goOut(Thread& thread);
};
