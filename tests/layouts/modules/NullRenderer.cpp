#include "log4vrk/layouts/LOGObjectRenderer.h"

extern "C" LOG4VRK_EXPORT LOGObjectRenderer* getRenderer() { return nullptr; }
