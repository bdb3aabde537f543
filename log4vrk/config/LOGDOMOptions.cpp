// What the configurator does with parameters.

#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/config/internal/LOGDOMChildren.h"
#include "log4vrk/config/internal/LOGDocumentTables.h"
#include "log4vrk/config/internal/LOGVariables.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/internal/LOGProblems.h"

void LOGDOMConfigurator::setParameter(const VRKIDOM_Element& element, LOGObject& target) const {
  const I18NString name = element.getAttribute(LOG4VRK_NAME_ATTR);
  const LOGProblems::Place place(element.getLineNumber(), "param", name, true);
  std::string problem;
  const I18NString value = LOGVariables::valueOf(element, m_hasVariables, problem);
  if (!problem.empty()) {
    LOGLogLog::error("LOGDOMConfigurator::setParameter -- " + I18NString(std::string_view(problem)) +
                     "; the parameter is ignored.");
    return;
  }
  // An empty value is as good as none, except that it takes an appender its file.
  if (value.isEmpty() && !LOGDocumentTables::mayBeEmpty(name)) return;
  const auto* const parameter = LOGDocumentTables::findParameter(target.instanceOf(), name);
  if (parameter != nullptr) parameter->set(target, value);
}

void LOGDOMConfigurator::setParameters(const VRKIDOM_Element& parent, LOGObject& target) const {
  for (const VRKIDOM_Element& child : logChildElements(parent)) {
    if (child.getTagName() == PARAM_TAG) setParameter(child, target);
  }
}
