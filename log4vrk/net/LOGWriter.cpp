#include "log4vrk/net/LOGWriter.h"

LOGWriter::~LOGWriter() = default;
