#include "log4vrk/config/internal/LOGDocumentRules.h"

#include <algorithm>

#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/config/internal/LOGDOMChildren.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/platform/I18NLocale.h"

using Reader = LOGDOMConfigurator;
using Tables = LOGDocumentTables;
using Model = LOGDocumentModel;

namespace {

constexpr short DOCUMENT_TYPE = 10;

std::string loggerName(const Model::Logger& logger) { return logger.isRoot ? "root" : "logger [" + logger.name + "]"; }

std::string nameOf(const VRKIDOM_Element& element) {
  const std::string tag = element.getTagName().toUtf8();
  const std::string name = Model::attribute(element, Reader::LOG4VRK_NAME_ATTR);
  return name.empty() ? tag : tag + " [" + name + "]";
}

std::string quoted(const VRKIDOM_Element& element, const I18NString& attribute) {
  return attribute.toUtf8() + "=\"" + Model::attribute(element, attribute) + "\"";
}

bool isGiven(const I18NString& attribute) { return !attribute.isEmpty() && attribute != "null"; }

// What editors and validators need, and the reader passes over.
bool isForOthers(const std::string& attribute) {
  return attribute.rfind("xmlns", 0) == 0 || attribute.rfind("xml:", 0) == 0 || attribute.rfind("xsi:", 0) == 0;
}

}  // namespace

void logCheckReference(const LOGDocumentModel& model, const LOGDocumentModel::Reference& reference,
                       const std::string& where, LOGFindings& findings) {
  if (reference.appender != nullptr) return;
  std::vector<std::string> names;
  for (const auto& appender : model.appenders()) {
    if (appender->name != reference.name) {
      names.push_back(appender->name);
    } else if (!appender->isKnown) {
      return;  // the class is what is wrong, and is told there
    } else {
      findings.add(LOGFinding::FAULT, "appender-ring", reference.element, where,
                   quoted(reference.element, Reader::REF_ATTR),
                   "the appender leads to itself; the reference counts as missing");
      return;
    }
  }
  findings.add(LOGFinding::FAULT, "appender-missing", reference.element, where,
               quoted(reference.element, Reader::REF_ATTR), "there is no appender of that name; nothing is attached",
               logNearest(reference.name, names));
}

bool LOGDocumentRules::checkRoot() {
  const VRKIDOM_Element& root = m_model.root();
  const std::string expected = Reader::CONFIGURATION_TAG.toUtf8();
  if (!m_model.isConfiguration()) {
    m_findings.add(LOGFinding::FAULT, "unknown-root", root, "", "<" + root.getTagName().toUtf8() + ">",
                   "nothing of the document is applied", expected);
    return false;
  }
  if (root.getTagName() == Reader::OLD_CONFIGURATION_TAG) {
    m_findings.add(LOGFinding::WARNING, "old-root", root, "", "<" + root.getTagName().toUtf8() + ">",
                   "the document is applied, with two warnings in the internal log", expected);
  }
  return true;
}

void LOGDocumentRules::check() {
  checkDocumentType();
  checkRootAttributes();
  checkElement(m_model.root(), "");
  for (const VRKIDOM_Element& child : logChildElements(m_model.root())) {
    const I18NString tag = child.getTagName();
    if (tag == Reader::CATEGORY_FACTORY_TAG) checkFactory(child);
    if (tag == Reader::RENDERER_TAG) checkRenderer(child);
  }
  for (const VRKIDOM_Element& child : logChildElements(m_model.root())) {
    const I18NString tag = child.getTagName();
    if (tag == Reader::LOGGER || tag == Reader::CATEGORY) checkLoggerElement(child);
    if (tag == Reader::ROOT_TAG) checkParts(child, true, "root");
  }
  checkLoggers();
}

void LOGDocumentRules::checkDocumentType() {
  const VRKIDOM_NodeList nodes = m_model.document().getChildNodes();
  for (long i = 0; i < nodes.getLength(); ++i) {
    if (nodes.item(i).getNodeType() != DOCUMENT_TYPE) continue;
    m_findings.add(LOGFinding::NOTE, "doctype", m_model.root(), "", "<!DOCTYPE>",
                   "no external DTD and no external entity is read; what they would bring is missing");
  }
}

void LOGDocumentRules::checkRootAttributes() {
  const VRKIDOM_Element& root = m_model.root();
  const I18NString debug = root.getAttribute(Reader::INTERNAL_DEBUG_ATTR);
  if (isGiven(debug) && !vrkEqualIgnoringAsciiCase(debug, "true")) {
    m_findings.add(LOGFinding::WARNING, "debug-value", root, "", quoted(root, Reader::INTERNAL_DEBUG_ATTR),
                   "internal debugging is switched on, whatever the value is");
  }
  if (isGiven(root.getAttribute(Reader::CONFIG_DEBUG_ATTR))) {
    m_findings.add(LOGFinding::WARNING, "old-debug", root, "", quoted(root, Reader::CONFIG_DEBUG_ATTR),
                   "internal debugging is switched on, with two warnings in the internal log",
                   Reader::INTERNAL_DEBUG_ATTR.toUtf8());
  }
  const I18NString substitute = root.getAttribute(Reader::SUBSTITUTE_ATTR);
  if (!substitute.isEmpty() && !m_model.hasVariables() && !vrkEqualIgnoringAsciiCase(substitute, "false")) {
    m_findings.add(LOGFinding::WARNING, "substitute-value", root, "", quoted(root, Reader::SUBSTITUTE_ATTR),
                   "only true puts variables in", logNearest(substitute.toUtf8(), {"true", "false"}));
  }
  const I18NString threshold = root.getAttribute(Reader::THRESHOLD_ATTR);
  if (isGiven(threshold) && LOGLevel::toLevel(threshold, nullptr) == nullptr) {
    m_findings.add(LOGFinding::FAULT, "threshold-unknown", root, "", quoted(root, Reader::THRESHOLD_ATTR),
                   "there is no such level; the threshold stays as it was",
                   logNearest(threshold.toUtf8(), Tables::levelNames()));
  }
}

// What the reader has no word for, it passes over in silence.
void LOGDocumentRules::checkElement(const VRKIDOM_Element& element, const std::string& where) {
  const Tables::Element* const known = Tables::findElement(element.getTagName().toUtf8());
  if (known == nullptr) return;
  checkAttributes(element, *known, where);
  for (const VRKIDOM_Element& child : logChildElements(element)) {
    const std::string tag = child.getTagName().toUtf8();
    if (std::find(known->children.begin(), known->children.end(), tag) != known->children.end()) {
      checkElement(child, where.empty() || tag == "param" ? nameOf(child) : where);
      continue;
    }
    const Tables::Element* const elsewhere = Tables::findElement(tag);
    if (elsewhere == nullptr) {
      m_findings.add(LOGFinding::FAULT, "element-unknown", child, where, "<" + tag + ">",
                     "the element and what is in it is ignored", logNearest(tag, known->children));
    } else if (tag == Reader::APPENDER_TAG.toUtf8()) {
      m_findings.add(LOGFinding::WARNING, "appender-misplaced", child, where, "<" + tag + ">",
                     "references find it here too, but it belongs directly below the root element");
      checkElement(child, nameOf(child));
    } else {
      m_findings.add(LOGFinding::FAULT, "element-misplaced", child, where, "<" + tag + ">",
                     "the element is known elsewhere; here it and what is in it is ignored");
    }
  }
}

void LOGDocumentRules::checkAttributes(const VRKIDOM_Element& element, const Tables::Element& known,
                                       const std::string& where) {
  const VRKIDOM_NamedNodeMap attributes = element.getAttributes();
  for (long i = 0; i < attributes.getLength(); ++i) {
    const std::string name = attributes.item(i).getNodeName().toUtf8();
    const auto& names = known.attributes;
    if (isForOthers(name) || std::find(names.begin(), names.end(), name) != names.end()) continue;
    m_findings.add(LOGFinding::WARNING, "attribute-unknown", element, where, name, "the attribute is ignored",
                   logNearest(name, names));
  }
}

void LOGDocumentRules::checkFactory(const VRKIDOM_Element& element) {
  if (Reader::subst(element.getAttribute(Reader::CLASS_ATTR)).isEmpty()) {
    m_findings.add(LOGFinding::FAULT, "factory-without-class", element, "categoryFactory", "",
                   "there is no factory; loggers with a class are not configured");
    return;
  }
  if (m_hasFactory) {
    m_findings.add(LOGFinding::WARNING, "factory-twice", element, "categoryFactory",
                   quoted(element, Reader::CLASS_ATTR), "the last factory makes all loggers that have a class");
  }
  m_hasFactory = true;
}

void LOGDocumentRules::checkRenderer(const VRKIDOM_Element& element) {
  for (const I18NString* name : {&Reader::RENDERED_CLASS_ATTR, &Reader::RENDERING_CLASS_ATTR}) {
    if (!element.getAttribute(*name).isEmpty()) continue;
    m_findings.add(LOGFinding::FAULT, "renderer-without-class", element, "renderer", name->toUtf8(),
                   "nothing is rendered by it");
  }
}

void LOGDocumentRules::checkLoggerElement(const VRKIDOM_Element& element) {
  const std::string name = Model::attribute(element, Reader::LOG4VRK_NAME_ATTR);
  const std::string where = "logger [" + name.substr(0, 100) + "]";
  if (name.empty()) {
    m_findings.add(LOGFinding::WARNING, "logger-without-name", element, where, "",
                   "the logger with the empty name is configured");
  }
  if (element.getAttribute(Reader::LOG4VRK_NAME_ATTR).length() > Tables::LONGEST_LOGGER_NAME) {
    m_findings.add(LOGFinding::FAULT, "logger-name-too-long", element, where, "",
                   "names of more than 1000 characters are refused; the element is ignored");
    return;
  }
  if (!name.empty() && std::string_view("root").substr(0, name.size()) == name) {
    m_findings.add(LOGFinding::WARNING, "logger-named-like-root", element, where, name,
                   "loggers below it that were made before it stay below the root");
  }
  if (!Reader::subst(element.getAttribute(Reader::CLASS_ATTR)).isEmpty() && !m_hasFactory) {
    m_findings.add(LOGFinding::FAULT, "logger-without-factory", element, where, quoted(element, Reader::CLASS_ATTR),
                   "without a categoryFactory in this or an earlier document the element is ignored");
  }
  const I18NString tag = element.getTagName();
  if (tag == Reader::CATEGORY) {
    m_findings.add(LOGFinding::NOTE, "old-name", element, where, tag.toUtf8(), "it means the same as logger", "logger");
  }
  checkAdditivity(element, where);
  checkParts(element, false, where);
}

void LOGDocumentRules::checkAdditivity(const VRKIDOM_Element& element, const std::string& where) {
  const I18NString additivity = element.getAttribute(Reader::ADDITIVITY_ATTR);
  const bool isPlain = additivity.isEmpty() || vrkEqualIgnoringAsciiCase(additivity, "true") ||
                       vrkEqualIgnoringAsciiCase(additivity, "false");
  if (isPlain) return;
  m_findings.add(LOGFinding::WARNING, "additivity-value", element, where, quoted(element, Reader::ADDITIVITY_ATTR),
                 "the logger is additive: only false is not", logNearest(additivity.toUtf8(), {"false", "true"}));
}

void LOGDocumentRules::checkParts(const VRKIDOM_Element& element, bool isRoot, const std::string& where) {
  int levels = 0;
  std::set<std::string> references;
  for (const VRKIDOM_Element& child : logChildElements(element)) {
    const I18NString tag = child.getTagName();
    if (tag == Reader::LEVEL_TAG || tag == Reader::PRIORITY_TAG) {
      checkLevel(child, isRoot, where);
      if (++levels == 2) {
        m_findings.add(LOGFinding::WARNING, "level-twice", child, where, quoted(child, Reader::VALUE_ATTR),
                       "the last level of the element counts");
      }
    } else if (tag == Reader::PARAM_TAG) {
      m_findings.add(LOGFinding::WARNING, "param-ignored", child, where, quoted(child, Reader::LOG4VRK_NAME_ATTR),
                     "loggers take no parameters; it is ignored");
    } else if (tag == Reader::APPENDER_REF_TAG &&
               !references.insert(Model::attribute(child, Reader::REF_ATTR)).second) {
      m_findings.add(LOGFinding::WARNING, "appender-ref-twice", child, where, quoted(child, Reader::REF_ATTR),
                     "the appender is attached once");
    }
  }
}

void LOGDocumentRules::checkLevel(const VRKIDOM_Element& element, bool isRoot, const std::string& where) {
  std::string problem;
  const I18NString value = m_model.valueOf(element, problem);
  const std::string text = quoted(element, Reader::VALUE_ATTR);
  if (!element.getAttribute(Reader::CLASS_ATTR).isEmpty()) {
    m_findings.add(LOGFinding::WARNING, "level-class", element, where, quoted(element, Reader::CLASS_ATTR),
                   "there are no levels of other classes; the attribute is ignored");
  }
  if (element.getTagName() == Reader::PRIORITY_TAG) {
    m_findings.add(LOGFinding::NOTE, "old-name", element, where, "priority", "it means the same as level", "level");
  }
  const std::string inherited = LOGConfigurator::m_INHERITED.toUtf8();
  if (!problem.empty()) {
    m_findings.add(LOGFinding::FAULT, "variable-value", element, where, text, problem + "; the level stays as it was");
  } else if (value == LOGConfigurator::m_INHERITED) {
    if (!isRoot) return;
    m_findings.add(LOGFinding::FAULT, "root-inherited", element, where, text,
                   "the root has nobody to inherit from; its level stays as it was");
  } else if (LOGLevel::toLevel(value, nullptr) == nullptr) {
    std::vector<std::string> words = Tables::levelNames();
    if (!isRoot) words.push_back(inherited);
    m_findings.add(LOGFinding::WARNING, "level-unknown", element, where, text, "there is no such level; it is DEBUG",
                   logNearest(value.toUtf8(), words));
  }
}

void LOGDocumentRules::checkLoggers() {
  for (const auto& logger : m_model.loggers()) {
    const std::string where = loggerName(*logger);
    if (logger->elements.size() > 1) {
      m_findings.add(LOGFinding::WARNING, logger->isRoot ? "root-twice" : "logger-twice", logger->elements.back(),
                     where, "",
                     "it closes and removes the appenders that the elements before it have attached, "
                     "also for other loggers that share them");
    }
    for (const Model::Reference& reference : logger->references) {
      logCheckReference(m_model, reference, where, m_findings);
    }
    if (logger->elements.empty()) continue;
    checkThreshold(*logger, where);
    checkReached(*logger, where);
  }
}

void LOGDocumentRules::checkThreshold(const Model::Logger& logger, const std::string& where) {
  if (logger.level == nullptr || logger.levelElement.isNull()) return;
  if (logger.level->toInt() >= m_model.threshold()->toInt()) return;
  if (*logger.level == *LOGLevel::ALL_OBJ && m_model.threshold()->toInt() <= LOGLevel::DEBUG_RANK) return;
  m_findings.add(LOGFinding::WARNING, "threshold-above-level", logger.levelElement, where,
                 quoted(logger.levelElement, Reader::VALUE_ATTR),
                 "the threshold of the document, " + m_model.threshold()->toString().toUtf8() +
                     ", keeps events below it from all loggers");
}

void LOGDocumentRules::checkReached(const Model::Logger& logger, const std::string& where) {
  const std::vector<Model::Reached> reached = m_model.reachedFrom(logger);
  const bool isOff = *m_model.levelSource(logger).level == *LOGLevel::OFF_OBJ;
  if (reached.empty() && !isOff) {
    m_findings.add(LOGFinding::WARNING, "events-go-nowhere", logger.elements.back(), where, "",
                   "neither it nor a logger that it passes events on to has an appender: its events are lost");
  }
  if (logger.references.empty()) return;
  // Told once, at the logger whose own reference is one too many.
  std::map<const Model::Appender*, int> ways;
  std::set<const Model::Appender*> told;
  const auto count = [&](const Model::Reference& reference, auto&& self) -> void {
    constexpr int ENOUGH = 100;  // they may lead to each other in very many ways
    if (++ways[reference.appender] > ENOUGH || !reference.appender->isContainer()) return;
    for (const Model::Reference& nested : reference.appender->nested) {
      if (nested.appender != nullptr) self(nested, self);
    }
  };
  for (const Model::Reached& each : reached) count(*each.reference, count);
  for (const auto& [appender, times] : ways) {
    if (times < 2 || !told.insert(appender).second) continue;
    m_findings.add(LOGFinding::WARNING, "event-twice", logger.elements.back(), where, LOGFindings::appender(*appender),
                   "the appender is reached in " + std::to_string(times) + " ways, and gets each event as often");
  }
}
