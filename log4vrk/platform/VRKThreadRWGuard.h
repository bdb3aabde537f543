// The scoped guard of a file lock; see VRKFileLockRW.h.

#pragma once

#include "log4vrk/platform/VRKFileLockRW.h"
