// The iterator of a VRKList that outlives the elements it stands on; see VRKList.h.

#pragma once

#include "log4vrk/platform/VRKList.h"
