#include "log4vrk/config/LOG4VRKConfigurator.h"

#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/config/internal/LOGDocumentRefusal.h"
#include "log4vrk/config/internal/LOGVariables.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGManager.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGProblems.h"

LOG4VRKConfigurator::LOG4VRKConfigurator() = default;
LOG4VRKConfigurator::~LOG4VRKConfigurator() = default;

int LOG4VRKConfigurator::initialize(const I18NString& fileName) { return LOGDOMConfigurator::configure(fileName); }

void LOG4VRKConfigurator::setRefuseFaultyDocuments(int on) { LOGDocumentRefusal::set(on != 0); }

void LOG4VRKConfigurator::setVariable(const I18NString& name, const I18NString& value) {
  constexpr const char* TEXT = "LOG4VRKConfigurator::setVariable -- ";
  logContainAll({TEXT, TEXT, TEXT}, [&] {
    if (LOGVariables::isName(name)) return LOGVariables::set(name, value);
    LOGLogLog::error(TEXT + ("[" + name) + "] is no name: letters, digits, _ and . only");
  });
}

I18NString LOG4VRKConfigurator::getProblems() { return LOGProblems::ofLastRun(); }

void LOG4VRKConfigurator::shutdown() {
  if (LOGDeferral::active()) {
    LOGLogLog::error("LOGHierarchy::shutdown -- called from inside a log call, ignored");
    return;
  }
  // Asks without making a repository only to shut it down.
  if (LOGManager::hasSelector()) LOGLogger::shutdown();
  LOGLogLog::shutdown();
}
