// What happens around a fork of the process.

#pragma once

/// Has `prepare` called before every later fork, and `parent` or `child` after it, each on the forking thread. What was
/// registered last prepares first. For the library's own use.
void vrkAtFork(void (*prepare)(), void (*parent)(), void (*child)());
