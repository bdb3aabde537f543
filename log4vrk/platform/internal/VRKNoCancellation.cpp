#include "log4vrk/platform/internal/VRKNoCancellation.h"

#include <pthread.h>

VRKNoCancellation::VRKNoCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_before); }

VRKNoCancellation::~VRKNoCancellation() { pthread_setcancelstate(m_before, nullptr); }
