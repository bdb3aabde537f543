// The way into the XML parser library; see VRKIDOM.h.

#pragma once

#include "log4vrk/platform/VRKIDOM.h"
