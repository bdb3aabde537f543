// A library whose function returns no renderer.

#include "log4vrk/core/LOGObjectRenderer.h"

extern "C" LOG4VRK_EXPORT LOGObjectRenderer* getRenderer() { return nullptr; }
