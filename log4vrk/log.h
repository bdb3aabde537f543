// What a file needs that only logs: loggers, and the macros that put a text together. It costs a compiler much less
// than log4vrk.h, which is for files that configure or have appenders of their own; ./dev bench headers measures it. A
// value with an operator<< for std::ostream needs <ostream> beside it.

#pragma once

#include "log4vrk/core/LOGContext.h"
#include "log4vrk/core/LOGFieldMacros.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGMacros.h"
#include "log4vrk/core/LOGManager.h"
