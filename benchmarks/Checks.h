// The least that a disabled call could do: ask the level.

#pragma once

#include <atomic>

namespace bench {

/// Above all that is asked. Another source's, so that the compiler does not know it.
extern std::atomic<int> level;

/// What the line is made of, if it were wanted.
void evaluate(int number);

/// The question behind a function call.
void checkLevel(int rank, int number);

}  // namespace bench
