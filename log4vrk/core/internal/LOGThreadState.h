// What the library knows of a thread: a place for what each of its parts keeps there.

#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "log4vrk/core/internal/LOGAppenderUse.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGGate.h"
#include "log4vrk/core/internal/LOGThreadName.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

class LOGObjectRenderer;
class VRKThreadExit;
class LOGStack;
struct LOGJSONCopies;
struct LOGPatternCopies;

/// The stack of context texts. See LOGNDC.
struct LOGThreadContext {
  std::shared_ptr<LOGStack> stack;
  unsigned generation = 0;
};

/// Room for texts that lasts from one log call to the next.
struct LOGThreadTexts {
  I18NUtf8Buffer message;  // as rendered, where that took a conversion
  I18NUtf8Buffer line;     // of the event that has been formatted last, for whoever writes it
};

/// One for each thread that has come into the library, never freed: a later thread takes over what an ended one leaves.
///
/// Thread safety: gate and uses say what others may ask; the rest is the thread's own. Aligned, so that no thread
/// writes into the cache lines of another.
struct alignas(128) LOGThreadState {
  /// The calling thread's. After the thread's other destructors have run, a new one is made for what they still log.
  static LOGThreadState& current() { return s_current != nullptr ? *s_current : make(); }

  /// The same on a thread that others rely on: it waits until there is memory.
  static LOGThreadState& waitForCurrent();

  /// One for a thread that is about to be started, so that the thread needs no memory to come into the library.
  class Reserved {
   public:
    /// Raises std::bad_alloc.
    Reserved() : m_state(take()) {}
    ~Reserved() { keep(m_state); }
    Reserved(const Reserved&) = delete;
    Reserved& operator=(const Reserved&) = delete;

    /// On the thread, once: it is the calling thread's from now on.
    void use() { begin(std::exchange(m_state, nullptr)); }

   private:
    LOGThreadState* m_state;
  };

  /// As new, for the next thread.
  void forget();

  /// Whether `condition(state)` holds for any thread's.
  template <typename Condition>
  static bool any(Condition condition) {
    for (const LOGThreadState* state = s_all.load(std::memory_order_acquire); state != nullptr; state = state->m_next) {
      if (condition(*state)) return true;
    }
    return false;
  }

  LOGGate::Thread gate;
  LOGAppenderUse::Thread uses;
  LOGDeferral::Thread deferral;
  unsigned refusals = 0;  // see LOGTaking
  LOGThreadName name;
  LOGThreadTexts texts;
  LOGThreadContext context;
  I18NUtf8Buffer fields;                            // of LOGContext, as LOGFields has them
  std::vector<const LOGObjectRenderer*> renderers;  // by which it is rendering, the innermost last
  std::shared_ptr<LOGPatternCopies> patterns;       // that the thread has used last
  std::shared_ptr<LOGJSONCopies> jsons;             // of JSON layouts, the same

  // For those who fork. The child has only the thread that forked: the states of the others stay as they are and are
  // never taken over, because the fork may have caught a thread in the middle of a change.
  static void prepareFork();
  static void finishForkInParent();
  static void finishForkInChild();

 private:
  static LOGThreadState& make();
  /// What an ended thread has left, or a new one.
  static LOGThreadState* take();
  static void keep(LOGThreadState* state);
  static void begin(LOGThreadState* state);
  static VRKThreadExit& exit();
  static void leave(void* value);

  static std::atomic<LOGThreadState*> s_all;
  // One pointer fits into the room that the thread library keeps for libraries loaded late, and needs no call to find.
  static __thread LOGThreadState* s_current __attribute__((tls_model("initial-exec")));

  LOGThreadState* m_next = nullptr;      // of all states; constant once published
  LOGThreadState* m_nextFree = nullptr;  // of those that ended threads have left
};
