// The handle of an XML element; see VRKIDOM.h.

#pragma once

#include "log4vrk/platform/VRKIDOM.h"
