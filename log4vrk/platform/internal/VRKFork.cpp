#include "log4vrk/platform/internal/VRKFork.h"

#include <pthread.h>

void vrkAtFork(void (*prepare)(), void (*parent)(), void (*child)()) { pthread_atfork(prepare, parent, child); }
