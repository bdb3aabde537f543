// A thread of the library.

#pragma once

#include <cstddef>
#include <memory>

#include "log4vrk/platform/VRKExport.h"

/// A thread that runs its own run(). It blocks all signals, so that the program's handlers run on the program's
/// threads. Nothing that run() raises gets out: the thread ends.
///
/// Thread safety: start() and join() from any thread; sleep() and currentThreadId() anywhere.
/// After a fork the child has none of the parent's threads: there such an object counts as never started, for good.
/// Ownership: a derived class joins in its destructor, before what run() uses is gone. An object whose thread is still
/// running when the base is destroyed leaves the thread to itself.
class LOG4VRK_EXPORT VRKThread {
 public:
  /// `stackSize` in bytes; 0 is the system's default.
  explicit VRKThread(std::size_t stackSize = 0);
  virtual ~VRKThread();
  VRKThread(const VRKThread&) = delete;
  VRKThread& operator=(const VRKThread&) = delete;

  virtual void run() = 0;
  /// Raises VRKSystemError when the system has no thread to give. Does nothing while a started thread has not been
  /// joined.
  virtual void start();
  /// Waits until run() has ended. Returns at once when the thread was never started, and on the thread itself.
  virtual void join();
  virtual bool isAlive() const;

  /// Raises VRKSystemError when the sleep is refused.
  static void sleep(long microseconds);
  /// The number that the system's tools show for the calling thread.
  static long currentThreadId();
  /// How many forks lie between this process and the one that loaded the library: threads do not live through a fork.
  static unsigned forks();

 private:
  struct State;
  std::shared_ptr<State> m_state;  // shared with the running thread, which may outlive this object
};

/// A sleep that another thread can cut short, for good.
///
/// Thread safety: any thread.
class LOG4VRK_EXPORT VRKStopSignal {
 public:
  VRKStopSignal();
  ~VRKStopSignal();
  VRKStopSignal(const VRKStopSignal&) = delete;
  VRKStopSignal& operator=(const VRKStopSignal&) = delete;

  /// True as soon as stop() has been called, false when the time is over.
  bool wait(long long microseconds);
  void stop();

 private:
  struct State;
  std::unique_ptr<State> m_state;
};
