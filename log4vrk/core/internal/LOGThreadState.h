// What the library knows of a thread.

#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

class LOGLogger;
class LOGLoggingEvent;
class LOGObjectRenderer;
class LOGStack;
struct LOGPatternCopies;

/// An event on its way to the root that has been put off.
struct LOGDeferredEvent {
  LOGLogger* logger;  // whose appenders get it next
  std::unique_ptr<LOGLoggingEvent> event;
  LOGLogger* origin;
  int writes = 0;
};

/// What a thread has removed from a logger while others may have been waiting for it in the middle of the same
/// appender.
struct LOGDeparture {
  const LOGLogger* logger;
  std::shared_ptr<const void> share;  // keeps the appenders
};

/// One for each thread that has come into the library, never freed: a later thread takes over what an ended one leaves.
/// For the library's own use.
///
/// Thread safety: the first group belongs to the thread, the second to everybody. Aligned, so that no thread writes
/// into the cache lines of another.
struct alignas(128) LOGThreadState {
  /// The calling thread's. After the thread's other destructors have run, a new one is made for what they still log.
  static LOGThreadState& current() { return s_current != nullptr ? *s_current : make(); }
  // Into the gate and out of it. May nest.
  void goIn() {
    if (passes++ == 0) enter();
  }
  void goOut() {
    if (--passes == 0) leave();
  }
  /// As new, for the next thread.
  void forget();

  int passes = 0;           // how often the thread is inside the gate
  int calls = 0;            // how deep it is in library calls that may run application code or hold locks
  bool delivering = false;  // deferred events are on their way
  bool holdsBack = false;   // a dispatcher that soon releases what appenders hold back
  bool dispatcher = false;  // it serves a queue, and must not wait for those who put into it
  bool hasRest = false;     // there are deferred events or departures
  std::size_t taken = 0;    // events deferred since the outermost call began
  std::deque<LOGDeferredEvent> deferred;
  std::vector<LOGDeparture> departures;
  std::vector<const LOGObjectRenderer*> renderers;  // by which it is rendering, the innermost last
  std::shared_ptr<LOGStack> context;                // the nested context
  unsigned contextGeneration = 0;
  I18NUtf8Buffer messageText;                  // as rendered, where that took a conversion
  I18NUtf8Buffer lineText;                     // of the event that has been formatted last, for whoever writes it
  std::shared_ptr<LOGPatternCopies> patterns;  // that the thread has used last
  bool isNamed = false;                        // the next two are the thread's
  I18NString threadName;
  std::string threadNameUtf8;

  // Whose appender the thread uses without the logger's lock. Counts only as long as the thread is inside.
  std::atomic<const LOGLogger*> borrowsFrom{nullptr};
  std::atomic<bool> inside{false};
  std::atomic<bool> serving{false};  // inside as a dispatcher
  std::atomic<bool> used{true};
  LOGThreadState* next = nullptr;  // constant once published

  // One pointer fits into the room that the thread library keeps for libraries loaded late, and needs no call to find.
  static __thread LOGThreadState* s_current __attribute__((tls_model("initial-exec")));

 private:
  static LOGThreadState& make();
  std::atomic<bool>& flag() { return dispatcher && !delivering ? serving : inside; }
  void enter();
  void leave() { flag().store(false, std::memory_order_release); }

  friend class LOGGate;
};
