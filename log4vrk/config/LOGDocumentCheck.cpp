#include "log4vrk/config/LOGDocumentCheck.h"

#include <algorithm>

#include "log4vrk/config/internal/LOGAppenderRules.h"
#include "log4vrk/config/internal/LOGDocumentReport.h"
#include "log4vrk/config/internal/LOGDocumentRules.h"
#include "log4vrk/config/internal/LOGEnvironmentRules.h"
#include "log4vrk/core/internal/LOGProblems.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKDocumentError.h"

LOGDocumentCheck::LOGDocumentCheck(const I18NString& fileName) { run(fileName, Settings()); }

LOGDocumentCheck::LOGDocumentCheck(const I18NString& fileName, Settings settings) { run(fileName, settings); }

LOGDocumentCheck::~LOGDocumentCheck() = default;

void LOGDocumentCheck::run(const I18NString& fileName, Settings settings) {
  const LOGProblems::Run apart{LOGProblems::Run::Apart()};
  VRKIDOM_Document document;
  try {
    document = VRKIDOM_Parser().parse(fileName.toUtf8().c_str());
  } catch (const VRKOutOfMemoryError&) {
    throw;
  } catch (const VRKThrowable& error) {
    const auto* const fault = dynamic_cast<const VRKDocumentError*>(&error);
    m_findings.push_back({LOGFinding::FAULT, "unreadable", fault != nullptr ? fault->lineInDocument() : 0,
                          fault != nullptr ? fault->columnInDocument() : 0, "", error.getText().toUtf8(),
                          "nothing of the document is applied", ""});
    return;
  }
  auto model = std::make_unique<const LOGDocumentModel>(document);
  LOGFindings findings(m_findings);
  LOGDocumentRules rules(*model, findings);
  if (rules.checkRoot()) {
    rules.check();
    LOGAppenderRules(*model, findings).check();
    if (settings.environment) LOGEnvironmentRules(*model, findings).check(settings.connect);
    m_model = std::move(model);
  }
  std::stable_sort(m_findings.begin(), m_findings.end(), [](const LOGFinding& a, const LOGFinding& b) {
    return a.line != b.line ? a.line < b.line : a.column < b.column;
  });
}

long LOGDocumentCheck::count(LOGFinding::Severity severity) const {
  return std::count_if(m_findings.begin(), m_findings.end(),
                       [&](const LOGFinding& finding) { return finding.severity >= severity; });
}

std::string LOGDocumentCheck::explain(const std::string& loggerName, const LOGLevel& level) const {
  return m_model ? LOGDocumentReport(*m_model).explain(loggerName, level) : std::string();
}

std::string LOGDocumentCheck::dump() const { return m_model ? LOGDocumentReport(*m_model).dump() : std::string(); }

std::string LOGDocumentCheck::sample() const { return m_model ? LOGDocumentReport(*m_model).sample() : std::string(); }
