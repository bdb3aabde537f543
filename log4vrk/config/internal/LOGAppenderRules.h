// What a configuration document tells about the faults of its appenders.

#pragma once

#include <map>
#include <set>

#include "log4vrk/config/internal/LOGEventTrial.h"
#include "log4vrk/config/internal/LOGFindings.h"

/// Thread safety: not thread-safe.
class LOGAppenderRules {
 public:
  LOGAppenderRules(const LOGDocumentModel& model, LOGFindings& findings) : m_model(model), m_findings(findings) {}

  void check();

 private:
  using Appender = LOGDocumentModel::Appender;
  using Part = LOGDocumentModel::Part;
  using Parameter = LOGDocumentModel::Parameter;

  void checkName(const Appender& appender);
  bool checkClass(const Appender& appender);
  void checkParameters(const Part& part, const std::string& where);
  void checkParameter(const Part& part, const Parameter& parameter, const std::string& where);
  void checkIgnored(const Part& part, const Parameter& parameter, const std::string& where);
  void checkBoolean(const Parameter& parameter, const std::string& where);
  void checkNumber(const Parameter& parameter, const std::string& where);
  void checkLevel(const Parameter& parameter, const std::string& where);
  void checkText(const Parameter& parameter, const std::string& where);
  void checkFile(const Appender& appender);
  void checkRolling(const Appender& appender);
  void checkTimeRolling(const Appender& appender);
  void checkNested(const Appender& appender);
  void checkAsync(const Appender& appender);
  void checkFallback(const Appender& appender);
  void checkNamesBehindQueue(const Appender& queue, const Appender& appender);
  void checkSyslog(const Appender& appender);
  void checkPort(const Appender& appender, const char* parameter);
  void checkSocket(const Appender& appender);
  void checkLayouts(const Appender& appender);
  void checkLayout(const Appender& appender, const Part& layout);
  void checkFilters(const Appender& appender, bool isSilent);
  void checkErrorHandlers(const Appender& appender);
  void checkSharedFiles();
  void checkSilence(const Appender& appender, const LOGEventTrial& trial);
  void add(LOGFinding::Severity severity, const char* name, const Part& part, const std::string& where,
           const std::string& text, const std::string& effect, const std::string& suggestion = {}) {
    m_findings.add(severity, name, part.element, where, text, effect, suggestion);
  }
  void addOf(LOGFinding::Severity severity, const char* name, const Parameter& parameter, const std::string& where,
             const std::string& effect, const std::string& suggestion = {});

  const LOGDocumentModel& m_model;
  LOGFindings& m_findings;
};
