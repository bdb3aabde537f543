// The scoped guard of a critical section; see VRKThreadCriticalSection.h.

#pragma once

#include "log4vrk/platform/VRKThreadCriticalSection.h"
