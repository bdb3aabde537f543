#include "log4vrk/config/internal/LOGDocumentRefusal.h"

#include <atomic>

#include "log4vrk/config/LOGDocumentCheck.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/internal/LOGProblems.h"

namespace {

std::atomic<bool> g_isOn{false};

}  // namespace

void LOGDocumentRefusal::set(bool isOn) { g_isOn = isOn; }

bool LOGDocumentRefusal::refuses(const I18NString& fileName) {
  if (!g_isOn) return false;
  const LOGDocumentCheck check(fileName);
  if (check.count(LOGFinding::FAULT) == 0) return false;
  for (const LOGFinding& finding : check.findings()) {
    if (finding.severity != LOGFinding::FAULT) continue;
    if (finding.name == "unreadable") return false;
    const LOGProblems::Place place(finding.line);
    std::string text = finding.where;
    for (const std::string* part : {&finding.text, &finding.effect}) {
      if (!part->empty()) text += (text.empty() ? "" : ": ") + *part;
    }
    LOGLogLog::error(I18NString("LOG4VRKConfigurator::initialize -- " + text + " [" + finding.name + "]"));
  }
  LOGLogLog::error("LOG4VRKConfigurator::initialize -- the document has errors and is not applied.");
  return true;
}
