#include "log4vrk/core/LOGOptionHandler.h"

LOGOptionHandler::~LOGOptionHandler() = default;
