// A library of renderers that write an object as its text in brackets. It counts the renderers that are alive.

#include <atomic>

#include "log4vrk/core/LOGObjectRenderer.h"

static std::atomic<int> g_living{0};

class EchoRenderer : public LOGObjectRenderer {
 public:
  EchoRenderer() { ++g_living; }
  ~EchoRenderer() override { --g_living; }
  I18NString* doRender(LOGObject* object) override { return new I18NString("[" + object->toString() + "]"); }
};

extern "C" LOG4VRK_EXPORT LOGObjectRenderer* getRenderer() { return new EchoRenderer; }
extern "C" LOG4VRK_EXPORT int livingRenderers() { return g_living; }
