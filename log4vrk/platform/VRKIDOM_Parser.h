// Reads XML documents from files; see VRKIDOM.h.

#pragma once

#include "log4vrk/platform/VRKIDOM.h"
