// What the library knows of a thread.

#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>

class LOGLogger;
class LOGLoggingEvent;
class LOGStack;

/// One for each thread that has come into the library, never freed: a later thread takes over what an ended one leaves.
/// For the library's own use.
///
/// Thread safety: the first group belongs to the thread, the second to everybody.
struct LOGThreadState {
  struct Deferred {
    LOGLogger* logger;
    std::unique_ptr<LOGLoggingEvent> event;
  };

  /// The calling thread's. After the thread's other destructors have run, a new one is made for what they still log.
  static LOGThreadState& current();
  /// As new, for the next thread.
  void forget();

  int passes = 0;           // how often the thread is inside the gate
  int calls = 0;            // how deep it is in library calls that may run application code or hold locks
  bool delivering = false;  // deferred events are on their way
  std::size_t taken = 0;    // events deferred since the outermost call began
  std::deque<Deferred> deferred;
  int renders = 0;                    // how deep it is in renderers
  std::shared_ptr<LOGStack> context;  // the nested context
  unsigned contextGeneration = 0;

  std::atomic<bool> inside{false};
  std::atomic<bool> used{true};
  LOGThreadState* next = nullptr;  // constant once published
};
