// How much stack the library gives its threads.

#pragma once

#include <cstddef>

/// In bytes. For the threads that run the program's code, whose needs nobody knows: its appenders, renderers and
/// factories.
inline constexpr std::size_t VRK_STACK_SIZE = 4096000;
