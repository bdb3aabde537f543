// Any bytes as a configuration document: read, applied to a hierarchy of its own, and logged to.

#include <cstdint>

#include "fuzz/HarmlessDocument.h"
#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/core/LOGHierarchy.h"
#include "log4vrk/core/LOGRootLogger.h"
#include "log4vrk/platform/VRKThrowable.h"

using namespace vrkfuzz;

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  writeNowhere();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const MemoryFile file(data, size);
  VRKIDOM_Document document;
  try {
    document = VRKIDOM_Parser().parse(file.path().c_str());
    disarm(document);
  } catch (const VRKThrowable&) {
    return 0;
  }
  LOGHierarchy hierarchy(new LOGRootLogger(LOGLevel::DEBUG_OBJ));
  LOGDOMConfigurator configurator;
  for (int run = 0; run < 2; ++run) {
    configurator.doConfigure(document.getDocumentElement(), &hierarchy);
    hierarchy.getRootLogger()->error("root");
    hierarchy.getLogger("shop.orders")->warn("below");
  }
  return 0;
}
