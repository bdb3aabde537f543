// The nested diagnostic context: what a thread is busy with.

#pragma once

#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/VRKExport.h"

class LOGStack;

/// Each thread has a stack of texts, such as the request and the user it works for. Layouts print them, joined by
/// blanks, with every event of the thread. The stack of a thread that ends goes with it; a forked child keeps that of
/// the thread that forked.
///
///   LOGNDC::push("request 17");
///   ...
///   LOGNDC::pop();
///
/// Thread safety: any thread; each sees its own stack only.
class LOG4VRK_EXPORT LOGNDC : public LOGObject {
 public:
  LOGNDC();
  LOGNDC(const LOGNDC&) = delete;
  LOGNDC& operator=(const LOGNDC&) = delete;
  /// Drops the stacks of all threads, as lazyRemove() does.
  ~LOGNDC() override;

  static void push(const I18NString& message);
  /// Removes the last text and returns it; empty when there is none.
  static I18NString pop();
  /// All texts, oldest first.
  static I18NString get();
  /// The last text.
  static I18NString peek();
  static int getDepth();

  // Change nothing, on purpose: only pop() and remove() shorten a context.
  static void clear();
  static void setMaxDepth(int maxDepth);

  /// Drops the thread's stack.
  static void remove();
  /// Drops the stacks of all threads.
  static void lazyRemove();

  /// A copy of the thread's stack, owned by the caller, for inherit() in another thread; null when there is none.
  static LOGStack* cloneStack();
  /// Takes the stack over as the calling thread's, in place of the one it has. Null changes nothing. Threads that are
  /// given the same stack share it. Without memory VRKOutOfMemoryError is raised, and the stack stays the caller's.
  static void inherit(LOGStack* stack);
};
