// The error of text operations; see VRKThrowable.h.

#pragma once

#include "log4vrk/platform/VRKThrowable.h"
