#include "log4vrk/appenders/LOGWriter.h"

LOGWriter::~LOGWriter() = default;
