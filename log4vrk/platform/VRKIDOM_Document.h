// The handle of an XML document; see VRKIDOM.h.

#pragma once

#include "log4vrk/platform/VRKIDOM.h"
