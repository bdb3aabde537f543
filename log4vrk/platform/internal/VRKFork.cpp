#include "log4vrk/platform/internal/VRKFork.h"

#include <pthread.h>

// One call, in a file of its own: the other folders see no POSIX.
void vrkAtFork(void (*prepare)(), void (*parent)(), void (*child)()) { pthread_atfork(prepare, parent, child); }
