// One of the library's errors; see VRKThrowable.h.

#pragma once

#include "log4vrk/platform/VRKThrowable.h"
