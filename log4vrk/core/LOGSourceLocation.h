// Where a log statement stands.

#pragma once

/// A place in the source. The macros make one constant for each statement, and an event carries a pointer to it: so a
/// library that logs must stay loaded as long as events of it are queued or kept.
struct LOGSourceLocation {
  const char* file;      // as the compiler was given it
  const char* function;  // without parameters
  int line;
};
