// A marker: the base of what can be sent elsewhere as an object.

#pragma once

#include "log4vrk/platform/VRKExport.h"

/// Events have it. It has no operations.
class LOG4VRK_EXPORT LOGSerializable {
 public:
  LOGSerializable() = default;
  LOGSerializable(const LOGSerializable&) = default;
  LOGSerializable& operator=(const LOGSerializable&) = default;
  virtual ~LOGSerializable();
};
