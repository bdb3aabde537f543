#include "log4vrk/config/internal/LOGDocumentModel.h"

#include <algorithm>

#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/config/internal/LOGDOMChildren.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/platform/I18NLocale.h"

using Reader = LOGDOMConfigurator;
using Tables = LOGDocumentTables;

const LOGDocumentModel::Parameter* LOGDocumentModel::Part::find(const char* parameter) const {
  for (auto each = parameters.rbegin(); each != parameters.rend(); ++each) {
    if (each->counts() && each->known->name == std::string_view(parameter)) return &*each;
  }
  return nullptr;
}

std::string LOGDocumentModel::Part::value(const char* parameter) const {
  if (const Parameter* const given = find(parameter)) return given->value;
  const auto* const known = Tables::findParameter(className, parameter);
  return known != nullptr ? known->defaultValue : "";
}

LOGDocumentModel::LOGDocumentModel(const VRKIDOM_Document& document)
    : m_document(document),
      m_root(document.getDocumentElement()),
      m_threshold(LOGLevel::ALL_OBJ),
      m_hasVariables(LOGVariables::areWanted(m_root)) {
  loggerOf("root", true).level = LOGLevel::DEBUG_OBJ;
  readAppenders();
  const I18NString threshold = m_root.getAttribute(Reader::THRESHOLD_ATTR);
  m_threshold = LOGLevel::toLevel(threshold, LOGLevel::ALL_OBJ);
  const std::vector<VRKIDOM_Element> children = logChildElements(m_root);
  for (const VRKIDOM_Element& child : children) {
    const bool isFactory = child.getTagName() == Reader::CATEGORY_FACTORY_TAG;
    if (isFactory && !Reader::subst(child.getAttribute(Reader::CLASS_ATTR)).isEmpty()) m_hasFactory = true;
  }
  for (const VRKIDOM_Element& child : children) {
    const I18NString tag = child.getTagName();
    if (tag == Reader::ROOT_TAG) readLogger(child, true);
    if (tag == Reader::LOGGER || tag == Reader::CATEGORY) readLogger(child, false);
  }
  std::vector<const Appender*> path;
  for (const auto& logger : m_loggers) {
    for (const Reference& reference : logger->references) {
      if (reference.appender != nullptr) follow(*reference.appender, path);
    }
  }
}

bool LOGDocumentModel::isConfiguration() const {
  const I18NString tag = m_root.getTagName();
  return tag == Reader::CONFIGURATION_TAG || tag == Reader::OLD_CONFIGURATION_TAG;
}

void LOGDocumentModel::readPart(const VRKIDOM_Element& element, Part& part) const {
  part.element = element;
  part.name = attribute(element, Reader::LOG4VRK_NAME_ATTR);
  for (const VRKIDOM_Element& child : logChildElements(element)) {
    if (child.getTagName() != Reader::PARAM_TAG) continue;
    const I18NString name = child.getAttribute(Reader::LOG4VRK_NAME_ATTR);
    std::string problem;
    std::string value = valueOf(child, problem).toUtf8();
    if (!problem.empty()) value = attribute(child, Reader::VALUE_ATTR);
    part.parameters.push_back({child, name.toUtf8(), std::move(value),
                               part.isKnown ? Tables::findParameter(part.className, name) : nullptr,
                               std::move(problem)});
  }
}

// Wherever in the document they stand, as references find them. First all, so that references can be followed.
void LOGDocumentModel::readAppenders() {
  const VRKIDOM_NodeList elements = m_document.getElementsByTagName(Reader::APPENDER_TAG);
  for (long i = 0; i < elements.getLength(); ++i) readAppender(VRKIDOM_Element(elements.item(i)));
  for (const auto& appender : m_appenders) {
    for (const VRKIDOM_Element& child : logChildElements(appender->element)) {
      const I18NString tag = child.getTagName();
      if (tag == Reader::APPENDER_REF_TAG) appender->nested.push_back(readReference(child));
      if (tag != Reader::ERROR_HANDLER_TAG) continue;
      for (const VRKIDOM_Element& inner : logChildElements(child)) {
        if (inner.getTagName() == Reader::APPENDER_REF_TAG) appender->backups.push_back(readReference(inner));
      }
    }
  }
}

void LOGDocumentModel::readAppender(const VRKIDOM_Element& element) {
  auto appender = std::make_unique<Appender>();
  const auto classOf = [](const VRKIDOM_Element& from) { return from.getAttribute(Reader::CLASS_ATTR); };
  appender->className = Tables::appenderClass(classOf(element));
  appender->isKnown = Tables::findClass(Tables::appenders(), appender->className) != nullptr;
  readPart(element, *appender);
  for (const VRKIDOM_Element& child : logChildElements(element)) {
    const I18NString tag = child.getTagName();
    Part part;
    if (tag == Reader::LAYOUT_TAG) {
      part.className = Tables::layoutClass(classOf(child));
      part.isKnown = Tables::findClass(Tables::layouts(), part.className) != nullptr;
      readPart(child, part);
      appender->layouts.push_back(std::move(part));
    } else if (tag == Reader::FILTER_TAG) {
      part.className = Tables::filterClass(classOf(child));
      part.isKnown = Tables::findClass(Tables::filters(), part.className) != nullptr;
      readPart(child, part);
      appender->filters.push_back(std::move(part));
    } else if (tag == Reader::ERROR_HANDLER_TAG) {
      part.className = Reader::subst(classOf(child));
      part.isKnown = part.className == Tables::ERROR_HANDLER;
      readPart(child, part);
      appender->errorHandlers.push_back(std::move(part));
    }
  }
  appender->isFirst = m_appendersByName.emplace(appender->name, appender.get()).second;
  m_appenders.push_back(std::move(appender));
}

LOGDocumentModel::Reference LOGDocumentModel::readReference(const VRKIDOM_Element& element) const {
  std::string name = attribute(element, Reader::REF_ATTR);
  const auto found = m_appendersByName.find(name);
  Appender* const appender = found != m_appendersByName.end() && found->second->isKnown ? found->second : nullptr;
  return {element, std::move(name), appender};
}

// A reference from inside an appender to itself is not followed, whatever lies between.
void LOGDocumentModel::follow(Appender& appender, std::vector<const Appender*>& path) {
  if (appender.isReferred) return;
  appender.isReferred = true;
  path.push_back(&appender);
  const auto followAll = [&](std::vector<Reference>& references) {
    for (Reference& reference : references) {
      if (reference.appender == nullptr) continue;
      const bool leadsBack = std::find(path.begin(), path.end(), reference.appender) != path.end();
      if (leadsBack) {
        reference.appender = nullptr;
      } else {
        follow(*reference.appender, path);
      }
    }
  };
  if (appender.isContainer()) followAll(appender.nested);
  followAll(appender.backups);
  path.pop_back();
}

LOGDocumentModel::Logger& LOGDocumentModel::loggerOf(const std::string& name, bool isRoot) {
  if (isRoot && !m_loggers.empty()) return *m_loggers.front();
  const auto found = m_loggersByName.find(name);
  if (!isRoot && found != m_loggersByName.end()) return *found->second;
  m_loggers.push_back(std::make_unique<Logger>());
  Logger& logger = *m_loggers.back();
  logger.name = name;
  logger.isRoot = isRoot;
  if (!isRoot) m_loggersByName[name] = &logger;
  return logger;
}

void LOGDocumentModel::readLogger(const VRKIDOM_Element& element, bool isRoot) {
  if (!isRoot) {
    const bool hasClass = !Reader::subst(element.getAttribute(Reader::CLASS_ATTR)).isEmpty();
    const bool isTooLong = element.getAttribute(Reader::LOG4VRK_NAME_ATTR).length() > Tables::LONGEST_LOGGER_NAME;
    if (isTooLong || (hasClass && !m_hasFactory)) return;
  }
  Logger& logger = loggerOf(attribute(element, Reader::LOG4VRK_NAME_ATTR), isRoot);
  logger.elements.push_back(element);
  if (!isRoot) logger.additive = !vrkEqualIgnoringAsciiCase(element.getAttribute(Reader::ADDITIVITY_ATTR), "false");
  logger.references.clear();
  for (const VRKIDOM_Element& child : logChildElements(element)) {
    const I18NString tag = child.getTagName();
    if (tag == Reader::LEVEL_TAG || tag == Reader::PRIORITY_TAG) readLevel(child, logger);
    if (tag == Reader::APPENDER_REF_TAG) logger.references.push_back(readReference(child));
  }
}

void LOGDocumentModel::readLevel(const VRKIDOM_Element& element, Logger& logger) {
  std::string problem;
  const I18NString value = valueOf(element, problem);
  if (!problem.empty()) return;
  if (value == LOGConfigurator::m_INHERITED) {
    if (logger.isRoot) return;
    logger.level = nullptr;
  } else {
    logger.level = LOGLevel::toLevel(value);
  }
  logger.levelElement = element;
}

const LOGDocumentModel::Logger& LOGDocumentModel::nearest(const std::string& name) const {
  for (std::size_t end = name.size(); end != std::string::npos; end = end > 0 ? name.rfind('.', end - 1) : end) {
    const auto found = m_loggersByName.find(name.substr(0, end));
    if (found != m_loggersByName.end()) return *found->second;
    if (end == 0) break;
  }
  return *m_loggers.front();
}

const LOGDocumentModel::Logger& LOGDocumentModel::parentOf(const Logger& logger) const {
  const std::size_t dot = logger.name.rfind('.');
  return dot == std::string::npos ? *m_loggers.front() : nearest(logger.name.substr(0, dot));
}

const LOGDocumentModel::Logger& LOGDocumentModel::levelSource(const Logger& logger) const {
  const Logger* source = &logger;
  while (source->level == nullptr) source = &parentOf(*source);
  return *source;
}

std::vector<LOGDocumentModel::Reached> LOGDocumentModel::reachedFrom(const Logger& logger) const {
  std::vector<Reached> reached;
  for (const Logger* each = &logger;; each = &parentOf(*each)) {
    for (const Reference& reference : each->references) {
      const bool isTwice = std::any_of(reached.begin(), reached.end(), [&](const Reached& other) {
        return other.logger == each && other.reference->appender == reference.appender;
      });
      if (reference.appender != nullptr && !isTwice) reached.push_back({each, &reference});
    }
    if (each->isRoot || !each->additive) return reached;
  }
}
