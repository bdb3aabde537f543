#include "log4vrk/core/LOGMutex.h"

LOGMutex::~LOGMutex() = default;
