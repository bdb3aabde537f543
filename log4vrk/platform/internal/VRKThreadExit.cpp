#include "log4vrk/platform/internal/VRKThreadExit.h"

#include <pthread.h>

static_assert(sizeof(pthread_key_t) == sizeof(unsigned));

VRKThreadExit::VRKThreadExit(void (*operation)(void*)) { pthread_key_create(&m_key, operation); }

void VRKThreadExit::set(void* value) { pthread_setspecific(m_key, value); }
