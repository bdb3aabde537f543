// What the shared library shows to the programs that load it.

#pragma once

/// Marks a class or function of the public interface. Everything else is hidden inside the library. The attribute stays
/// on in programs that use the library, so that type information and exceptions match on both sides.
#define LOG4VRK_EXPORT __attribute__((visibility("default")))

/// Makes an operation, a lambda, part of the code that runs it.
#define VRK_INLINED __attribute__((always_inline))
