// What a configuration document itself tells about its faults.

#pragma once

#include <map>
#include <set>

#include "log4vrk/config/internal/LOGFindings.h"

/// The rules about elements, loggers and how events go. Those about appenders are LOGAppenderRules', those about what
/// lies around the document LOGEnvironmentRules'.
///
/// Thread safety: not thread-safe.
class LOGDocumentRules {
 public:
  LOGDocumentRules(const LOGDocumentModel& model, LOGFindings& findings) : m_model(model), m_findings(findings) {}

  /// False when nothing of the document would be applied: then there is nothing else to say.
  bool checkRoot();
  void check();

 private:
  void checkDocumentType();
  void checkRootAttributes();
  void checkElement(const VRKIDOM_Element& element, const std::string& where);
  void checkAttributes(const VRKIDOM_Element& element, const LOGDocumentTables::Element& known,
                       const std::string& where);
  void checkFactory(const VRKIDOM_Element& element);
  void checkRenderer(const VRKIDOM_Element& element);
  void checkLoggerElement(const VRKIDOM_Element& element);
  void checkAdditivity(const VRKIDOM_Element& element, const std::string& where);
  void checkParts(const VRKIDOM_Element& element, bool isRoot, const std::string& where);
  void checkLevel(const VRKIDOM_Element& element, bool isRoot, const std::string& where);
  void checkLoggers();
  void checkThreshold(const LOGDocumentModel::Logger& logger, const std::string& where);
  void checkReached(const LOGDocumentModel::Logger& logger, const std::string& where);

  const LOGDocumentModel& m_model;
  LOGFindings& m_findings;
  bool m_hasFactory = false;
};

/// Says of a reference that leads nowhere why.
void logCheckReference(const LOGDocumentModel& model, const LOGDocumentModel::Reference& reference,
                       const std::string& where, LOGFindings& findings);
