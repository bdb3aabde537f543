#include "log4vrk/core/LOGRootLogger.h"

#include "log4vrk/platform/VRKThrowable.h"

LOGRootLogger::LOGRootLogger(LOGLevel* level) : LOGLogger("root") {
  instance("LOGRootLogger");
  LOGLogger::setLevel(level != nullptr ? level : LOGLevel::DEBUG_OBJ);
}

LOGRootLogger::LOGRootLogger(const LOGRootLogger& other) = default;

LOGRootLogger::~LOGRootLogger() = default;

LOGObject* LOGRootLogger::clone() const {
  return vrkTranslateErrors(VRK_HERE, [&] { return new LOGRootLogger(*this); });
}
