// What the shared library shows to the programs that load it.

#pragma once

// Errors are caught and levels, messages and appenders told apart by their types, in the program's classes too.
#ifndef __cpp_rtti
#error "log4vrk needs run-time type information in every class that derives from its own: do not use -fno-rtti"
#endif

/// Marks a class or function that programs may link to; everything else is hidden inside the library. Programs that
/// include the header see the attribute as well, so that type information and exceptions are the same on both sides.
#define LOG4VRK_EXPORT __attribute__((visibility("default")))

/// Marks a member of an exported class that stays inside the library: private, and neither virtual nor called by an
/// inline function of a public header, so that programs never name it.
#define LOG4VRK_HIDDEN __attribute__((visibility("hidden")))

/// Marks what is the library's own and exported only because tests and fuzz targets link to it. Its headers are not
/// installed.
#define LOG4VRK_EXPORT_FOR_TESTS LOG4VRK_EXPORT

/// Makes a lambda part of the code that calls it, whatever the optimizer thinks. For the way to a system call, where
/// each call that has not returned yet costs time.
#define VRK_INLINED __attribute__((always_inline))
