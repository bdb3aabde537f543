// VRKThreadRWGuard, the scoped guard of a file lock, under a header of its own name.

#pragma once

#include "log4vrk/platform/VRKFileLockRW.h"
