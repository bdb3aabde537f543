// An appender that is attached somewhere.

#pragma once

#include <memory>

#include "log4vrk/core/LOGAppenderAttachableImpl.h"

class LOGAppenderBundle;

struct LOGAppenderAttachableImpl::Attached {
  LOGAppenderSkeleton* appender;
  std::shared_ptr<LOGAppenderBundle> share;  // null for an appender of the program's
};
