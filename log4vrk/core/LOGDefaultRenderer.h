// The renderer of objects that have none of their own.

#pragma once

#include "log4vrk/core/LOGObjectRenderer.h"

/// Thread safety: without state; any thread.
class LOG4VRK_EXPORT LOGDefaultRenderer : public LOGObjectRenderer {
 public:
  LOGDefaultRenderer();
  ~LOGDefaultRenderer() override;

  /// A copy of the object's toString(), which the caller owns. Null for null.
  I18NString* doRender(LOGObject* object) override;
};
