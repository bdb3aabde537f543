// Any bytes as a configuration document: what the check says of it is what the library does with it.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>

#include "fuzz/HarmlessDocument.h"
#include "log4vrk/config/LOG4VRKConfigurator.h"
#include "log4vrk/config/LOGDocumentCheck.h"
#include "log4vrk/core/LOGHierarchy.h"
#include "log4vrk/core/LOGRootLogger.h"

using namespace vrkfuzz;

namespace {

bool has(const LOGDocumentCheck& check, const char* name) {
  const auto& all = check.findings();
  return std::any_of(all.begin(), all.end(), [&](const LOGFinding& finding) { return finding.name == name; });
}

// Whether it is the same document for the check after it has been made harmless.
bool isComparable(const VRKIDOM_Document& document) {
  for (const char* tag : {"renderer", "categoryFactory"}) {
    if (document.getElementsByTagName(tag).getLength() > 0) return false;
  }
  const VRKIDOM_NodeList appenders = document.getElementsByTagName("appender");
  for (long i = 0; i < appenders.getLength(); ++i) {
    if (!staysInside(VRKIDOM_Element(appenders.item(i)).getAttribute("class"))) return false;
  }
  return true;
}

void expect(bool holds, const char* what) {
  if (holds) return;
  std::cerr << what << "\n" << LOG4VRKConfigurator::getProblems().toUtf8();
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  writeNowhere();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const MemoryFile file(data, size);
  LOGDocumentCheck::Settings documentOnly;
  documentOnly.environment = false;
  const LOGDocumentCheck check(file.path().c_str(), documentOnly);
  check.explain("shop.orders", *LOGLevel::INFO_OBJ);
  check.dump();
  check.sample();
  VRKIDOM_Document document;
  try {
    document = VRKIDOM_Parser().parse(file.path().c_str());
  } catch (const VRKThrowable&) {
    expect(has(check, "unreadable"), "the library cannot read it, and the check can");
    return 0;
  }
  if (!isComparable(document)) return 0;
  disarm(document);
  LOGHierarchy hierarchy(new LOGRootLogger(LOGLevel::DEBUG_OBJ));
  LOGDOMConfigurator configurator;
  const int applied = configurator.doConfigure(document.getDocumentElement(), &hierarchy);
  expect((applied == 0) == has(check, "unknown-root"), "they differ on whether it is applied");
  const bool isSilent = check.count(LOGFinding::WARNING) == 0;
  expect(!isSilent || LOG4VRKConfigurator::getProblems().isEmpty(), "the check is silent, and the library is not");
  return 0;
}
