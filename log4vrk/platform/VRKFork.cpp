#include "log4vrk/platform/VRKFork.h"

#include <pthread.h>

void vrkAtFork(void (*prepare)(), void (*parent)(), void (*child)()) { pthread_atfork(prepare, parent, child); }
