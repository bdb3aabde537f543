// What happens around a fork of the process.

#pragma once

/// Has `prepare` called before every later fork, and after it `parent` in the parent and `child` in the child, each on
/// the forking thread. Of several registrations the last prepares first. They stay for good. For the library's own use.
void vrkAtFork(void (*prepare)(), void (*parent)(), void (*child)());
