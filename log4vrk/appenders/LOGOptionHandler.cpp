#include "log4vrk/appenders/LOGOptionHandler.h"

LOGOptionHandler::~LOGOptionHandler() = default;
