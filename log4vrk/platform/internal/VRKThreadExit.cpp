#include "log4vrk/platform/internal/VRKThreadExit.h"

#include <pthread.h>

static_assert(sizeof(pthread_key_t) == sizeof(unsigned));

VRKThreadExit::VRKThreadExit(void (*operation)(void*)) : m_hasKey(pthread_key_create(&m_key, operation) == 0) {}

void VRKThreadExit::set(void* value) {
  // Without a key of its own it would write to whichever the program got under that number.
  if (m_hasKey) pthread_setspecific(m_key, value);
}
