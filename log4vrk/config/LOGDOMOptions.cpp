// What the configurator does with parameters.

#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/config/internal/LOGDOMChildren.h"
#include "log4vrk/config/internal/LOGDocumentTables.h"
#include "log4vrk/core/internal/LOGProblems.h"

void LOGDOMConfigurator::setParameter(const VRKIDOM_Element& element, LOGObject& target) {
  const I18NString name = element.getAttribute(LOG4VRK_NAME_ATTR);
  const I18NString value = element.getAttribute(VALUE_ATTR);
  const LOGProblems::Place place(element.getLineNumber(), "param", name, true);
  // An empty value is as good as none, except that it takes an appender its file.
  if (value.isEmpty() && !LOGDocumentTables::mayBeEmpty(name)) return;
  const auto* const parameter = LOGDocumentTables::findParameter(target.instanceOf(), name);
  if (parameter != nullptr) parameter->set(target, value);
}

void LOGDOMConfigurator::setParameters(const VRKIDOM_Element& parent, LOGObject& target) {
  for (const VRKIDOM_Element& child : logChildElements(parent)) {
    if (child.getTagName() == PARAM_TAG) setParameter(child, target);
  }
}
