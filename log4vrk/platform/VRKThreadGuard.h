// VRKThreadGuard, the scoped guard of a critical section, under a header of its own name.

#pragma once

#include "log4vrk/platform/VRKThreadCriticalSection.h"
