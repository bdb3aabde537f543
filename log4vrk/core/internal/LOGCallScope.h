// A library call that may run application code.

#pragma once

#include "log4vrk/platform/VRKExport.h"

struct LOGThreadState;

/// For its life the thread is inside the gate (LOGGate), and its own log calls are put off (LOGDeferral). What was put
/// off is delivered after the gate has been left, at the end of the outermost scope.
class LOG4VRK_EXPORT LOGCallScope {
 public:
  LOGCallScope();
  ~LOGCallScope();
  LOGCallScope(const LOGCallScope&) = delete;
  LOGCallScope& operator=(const LOGCallScope&) = delete;

 private:
  LOGThreadState& m_thread;
};
