// What the shared library shows to the programs that load it.

#pragma once

// Errors are caught and levels, messages and appenders told apart by their types, in the program's classes too.
#ifndef __cpp_rtti
#error "log4vrk needs run-time type information in every class that derives from its own: do not use -fno-rtti"
#endif

/// Marks a class or function of the public interface. Everything else is hidden inside the library. The attribute stays
/// on in programs that use the library, so that type information and exceptions match on both sides.
#define LOG4VRK_EXPORT __attribute__((visibility("default")))

/// Makes an operation, a lambda, part of the code that runs it.
#define VRK_INLINED __attribute__((always_inline))
