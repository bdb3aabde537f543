// What lies around a configuration document and does not fit it.

#pragma once

#include <set>

#include "log4vrk/config/internal/LOGFindings.h"

/// Looks at files, disks, libraries and hosts as the process sees them now. Nothing is written.
///
/// Thread safety: not thread-safe.
class LOGEnvironmentRules {
 public:
  LOGEnvironmentRules(const LOGDocumentModel& model, LOGFindings& findings) : m_model(model), m_findings(findings) {}

  void check(bool connect);

 private:
  using Appender = LOGDocumentModel::Appender;
  struct Host;

  void checkFile(const Appender& appender);
  void checkJournal(const Appender& appender);
  void checkSpace(const Appender& appender, const std::string& directory);
  void checkRecoveryDirectory(const Appender& appender);
  void checkLibraries();
  void checkLibrary(const VRKIDOM_Element& element, const std::string& className, const char* function,
                    LOGFinding::Severity severity, const char* name, const std::string& effect);
  void checkHosts(bool connect);
  void checkInternalLog();

  const LOGDocumentModel& m_model;
  LOGFindings& m_findings;
};
