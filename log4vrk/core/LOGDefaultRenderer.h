// The renderer of objects that have none of their own.

#pragma once

#include "log4vrk/core/LOGObjectRenderer.h"

class LOG4VRK_EXPORT LOGDefaultRenderer : public LOGObjectRenderer {
 public:
  LOGDefaultRenderer();
  ~LOGDefaultRenderer() override;

  /// The object's toString(); null for null.
  I18NString* doRender(LOGObject* object) override;
};
