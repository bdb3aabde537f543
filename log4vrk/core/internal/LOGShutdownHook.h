// What else ends with a shutdown of the hierarchy.

#pragma once

#include <atomic>

/// The configurator is above the hierarchy, and yet a shutdown ends it: so it leaves its part here when the library is
/// loaded. Nothing happens when it has not.
///
/// Thread safety: any thread.
class LOGShutdownHook {
 public:
  static bool set(void (*operation)()) {
    s_operation = operation;
    return true;
  }
  static void call() {
    if (void (*const operation)() = s_operation) operation();
  }

 private:
  inline static std::atomic<void (*)()> s_operation{nullptr};
};
