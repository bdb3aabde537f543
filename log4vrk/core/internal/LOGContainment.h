// The library's rule for errors that reach a public operation. Inlined always: each use has an operation of its own,
// and on the way of a log call there are several.

#pragma once

#include <utility>

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/platform/VRKThrowable.h"

/// What an operation writes to the internal log, by the kind of error.
struct LOGFailureTexts {
  enum Effect { NONE, EVENT_IS_LOST };

  const char* textError;
  const char* throwable;
  const char* unknown;
  Effect effect = NONE;  // of an error on the operation

  static constexpr LOGFailureTexts ofLostEvent(const char* text) { return {text, text, text, EVENT_IS_LOST}; }
};

/// What the functions below do with the error that is being handled. Out of line, so that each use costs one call.
/// The rule of logContain(): returns when the error ends here.
void logFailureContained(const LOGFailureTexts& texts);
/// The rule of logContainAll().
void logFailureContainedAll(const LOGFailureTexts& texts);
/// The rule of logReport().
[[noreturn]] void logFailureReported(const char* text);

/// Runs `operation`. The library's own errors are written with their description and end here; anything else is written
/// and raised again, because it is not the library's to judge.
template <typename Operation>
[[gnu::always_inline]] inline void logContain(const LOGFailureTexts& texts, Operation&& operation) {
  try {
    operation();
  } catch (...) {
    logFailureContained(texts);
  }
}

/// The same with one text for every kind.
template <typename Operation>
[[gnu::always_inline]] inline void logContain(const char* text, Operation&& operation) {
  try {
    operation();
  } catch (...) {
    logFailureContained({text, text, text});
  }
}

/// Runs `operation` and lets nothing out: what it raises is written, and `failed` returned.
template <typename Operation>
auto logContainAll(const LOGFailureTexts& texts, decltype(std::declval<Operation>()()) failed, Operation&& operation)
    -> decltype(operation()) {
  try {
    return operation();
  } catch (...) {
    logFailureContainedAll(texts);
  }
  return failed;
}

/// The same of an operation whose result nobody needs.
template <typename Operation>
void logContainAll(const LOGFailureTexts& texts, Operation&& operation) {
  try {
    operation();
  } catch (...) {
    logFailureContainedAll(texts);
  }
}

/// Runs `operation` and lets errors pass, after one line in the internal log that names the operation, not the cause.
template <typename Operation>
[[gnu::always_inline]] inline auto logReport(const char* text, Operation&& operation) -> decltype(operation()) {
  try {
    return operation();
  } catch (...) {
    logFailureReported(text);
  }
}
