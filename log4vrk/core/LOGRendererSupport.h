// What has a map of renderers.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGObject;
class LOGObjectRenderer;
class LOGRendererMap;

class LOG4VRK_EXPORT LOGRendererSupport {
 public:
  virtual ~LOGRendererSupport();

  virtual LOGRendererMap& getRendererMap() = 0;
  virtual void setRenderer(LOGObject* renderedClass, LOGObjectRenderer* renderer) = 0;
  virtual void setRenderer(const I18NString& renderedClassName, LOGObjectRenderer* renderer) = 0;
};
