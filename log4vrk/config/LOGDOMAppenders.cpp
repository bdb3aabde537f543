// The configurator's work on appenders and what belongs to them.

#include <algorithm>

#include "log4vrk/appenders/LOGOnlyOnceErrorHandler.h"
#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/config/internal/LOGDOMChildren.h"
#include "log4vrk/config/internal/LOGDocumentTables.h"
#include "log4vrk/core/LOGAppenderAttachable.h"
#include "log4vrk/core/LOGErrorHandler.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggerRepository.h"
#include "log4vrk/core/internal/LOGAppenderBundle.h"
#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGProblems.h"

namespace {

constexpr LOGFailureTexts LAYOUT_FAILURES{"Could not create the LOGLayout. Reported error follows.",
                                          "Could not create the LOGLayout. Reported error follows.",
                                          " LOGDOMConfigurator::parseLayout --- An unknown exception has occurred."};

}  // namespace

// A name that is being parsed, so that a reference to it from inside is not followed.
class LOGDOMConfigurator::Parsing {
 public:
  Parsing(std::vector<I18NString>& names, const I18NString& name) : m_names(names) { m_names.push_back(name); }
  ~Parsing() { m_names.pop_back(); }
  Parsing(const Parsing&) = delete;
  Parsing& operator=(const Parsing&) = delete;

 private:
  std::vector<I18NString>& m_names;
};

LOGAppenderSkeleton* LOGDOMConfigurator::findAppenderByReference(const VRKIDOM_Element& reference) {
  return findAppenderByName(reference.getAttribute(REF_ATTR), reference);
}

LOGAppenderSkeleton* LOGDOMConfigurator::findAppenderByName(const I18NString& name, const VRKIDOM_Element& reference) {
  auto* const known = static_cast<LOGAppenderSkeleton*>(m_appenderBag.get(name));
  if (known != nullptr && !known->isStale()) {
    LOGLogLog::debug("LOGDOMConfigurator::findAppenderByName : The appender " + name +
                     " already exists in appender bag, return it.");
    return known;
  }
  LOGLogLog::debug("LOGDOMConfigurator::findAppenderByName : The appender " + name +
                   " doesn't exist in appender bag or is already stale, parse from dom.");
  const bool leadsToItself = std::find(m_beingParsed.begin(), m_beingParsed.end(), name) != m_beingParsed.end();
  const VRKIDOM_NodeList elements = reference.getOwnerDocument().getElementsByTagName(APPENDER_TAG);
  for (long i = 0; !leadsToItself && i < elements.getLength(); ++i) {
    const VRKIDOM_Element element(elements.item(i));
    if (element.getAttribute(LOG4VRK_NAME_ATTR) != name) continue;
    const Parsing parsing(m_beingParsed, name);
    const std::shared_ptr<LOGAppenderBundle> bundle = parseAppender(element);
    if (!bundle) return nullptr;
    LOGLogLog::debug("LOGDOMConfigurator::findAppenderByName : Put appender " + name + " into the appender bag.");
    putIntoBag(name, bundle);
    return bundle->appender();
  }
  LOGLogLog::error("LOGDOMConfigurator::findAppenderByName : No appender named [" + name + "] could be found.");
  return nullptr;
}

std::shared_ptr<LOGAppenderBundle> LOGDOMConfigurator::parseAppender(const VRKIDOM_Element& element) {
  return logContainAll({"LOGDOMConfigurator::parseAppender -- some i18nstring error occurred",
                        "LOGDOMConfigurator::parseAppender -- unable to lock mutex",
                        "LOGDOMConfigurator::parseAppender -- An unknown exception has occured."},
                       nullptr, [&] {
                         const LOGProblems::Place place(element.getLineNumber(), "appender",
                                                        element.getAttribute(LOG4VRK_NAME_ATTR));
                         const VRKThreadGuard guard(m_critSection);
                         return makeAppender(element);
                       });
}

std::shared_ptr<LOGAppenderBundle> LOGDOMConfigurator::makeAppender(const VRKIDOM_Element& element) {
  const I18NString className = LOGDocumentTables::appenderClass(element.getAttribute(CLASS_ATTR));
  LOGLogLog::debug("Class name: [" + className + "]");
  const auto* const known = LOGDocumentTables::findClass(LOGDocumentTables::appenders(), className);
  if (known == nullptr) {
    LOGLogLog::warn("Could not find the appropriate class for Appenders");
    return nullptr;
  }
  std::shared_ptr<LOGAppenderBundle> bundle = LOGAppenderBundle::make(known->make());
  bundle->appender()->setName(element.getAttribute(LOG4VRK_NAME_ATTR));
  for (const VRKIDOM_Element& child : logChildElements(element)) parseAppenderChild(child, *bundle);
  bundle->appender()->activateOptions();
  return bundle;
}

void LOGDOMConfigurator::parseAppenderChild(const VRKIDOM_Element& child, LOGAppenderBundle& bundle) {
  const LOGProblems::Place place(child.getLineNumber());
  const I18NString tag = child.getTagName();
  if (tag == PARAM_TAG) {
    setParameter(child, *bundle.appender());
  } else if (tag == LAYOUT_TAG) {
    parseLayout(child, bundle);
  } else if (tag == FILTER_TAG) {
    parseFilters(child, bundle);
  } else if (tag == ERROR_HANDLER_TAG) {
    parseErrorHandler(child, bundle);
  } else if (tag == APPENDER_REF_TAG) {
    parseNestedAppender(child, bundle.appender());
  }
}

void LOGDOMConfigurator::parseNestedAppender(const VRKIDOM_Element& reference, LOGAppenderSkeleton* appender) {
  if (auto* const container = dynamic_cast<LOGAppenderAttachable*>(appender)) {
    LOGLogLog::debug("Attaching appender named [" + reference.getAttribute(REF_ATTR) + "] to appender named [" +
                     appender->getName() + "].");
    if (LOGAppenderSkeleton* const nested = findAppenderByReference(reference)) {
      container->addAppender(nested);
    }
    return;
  }
  LOGLogLog::error("Requesting attachment of appender named [" + reference.getAttribute(REF_ATTR) +
                   "] which does not implement LOGAppenderAttachable.");
}

void LOGDOMConfigurator::parseLayout(const VRKIDOM_Element& element, LOGAppenderBundle& bundle) {
  const I18NString className = LOGDocumentTables::layoutClass(element.getAttribute(CLASS_ATTR));
  LOGLogLog::debug("Parsing layout of class: \"" + className + "\"");
  logContainAll(LAYOUT_FAILURES, [&] {
    std::unique_ptr<LOGLayout> layout = LOGDocumentTables::makeLayout(className);
    setParameters(element, *layout);
    LOGLayout* const set = layout.get();
    bundle.own(std::move(layout));
    bundle.appender()->setLayout(set);
  });
}

void LOGDOMConfigurator::parseFilters(const VRKIDOM_Element& element, LOGAppenderBundle& bundle) {
  LOGAppenderSkeleton* const appender = bundle.appender();
  VRK_ASSERT(appender);
  const I18NString className = LOGDocumentTables::filterClass(element.getAttribute(CLASS_ATTR));
  LOGLogLog::debug("Parsing layout of class: \"" + className + "\"");
  logContainAll(LAYOUT_FAILURES, [&] {
    std::unique_ptr<LOGFilter> filter = LOGDocumentTables::makeFilter(className);
    setParameters(element, *filter);
    LOGFilter* const added = filter.get();
    bundle.own(std::move(filter));
    appender->addFilter(added);
  });
}

// The class name gets no prefix here, unlike those of appenders, layouts and filters.
void LOGDOMConfigurator::parseErrorHandler(const VRKIDOM_Element& element, LOGAppenderBundle& bundle) {
  const I18NString className = subst(element.getAttribute(CLASS_ATTR));
  LOGAppenderSkeleton* const appender = bundle.appender();
  VRK_ASSERT(appender);
  std::shared_ptr<LOGErrorHandler> handler;
  if (className == LOGDocumentTables::ERROR_HANDLER) {
    handler.reset(vrkNew<LOGOnlyOnceErrorHandler>(VRK_HERE));
  } else {
    LOGLogLog::warn("Creating generic error handler");
    handler.reset(vrkNew<LOGErrorHandler>(VRK_HERE));
  }
  bundle.own(handler);
  appender->setErrorHandler(handler.get());
  for (const VRKIDOM_Element& child : logChildElements(element)) {
    const LOGProblems::Place place(child.getLineNumber());
    const I18NString tag = child.getTagName();
    if (tag == PARAM_TAG) {
      setParameter(child, *handler);
    } else if (tag == APPENDER_REF_TAG) {
      LOGAppenderSkeleton* const backup = findAppenderByReference(child);
      if (std::shared_ptr<LOGAppenderBundle> kept = bundleOf(backup)) bundle.own(std::move(kept));
      handler->setBackupAppender(backup);
    } else if (tag == LOGGER_REF) {
      VRK_ASSERT(m_repository);
      const I18NString name = child.getAttribute(REF_ATTR);
      if (isLoggerName(name)) handler->setLogger(m_repository->getLogger(name));
    } else if (tag == ROOT_REF) {
      VRK_ASSERT(m_repository);
      handler->setLogger(m_repository->getRootLogger());
    }
  }
}

std::shared_ptr<LOGAppenderBundle> LOGDOMConfigurator::bundleOf(const LOGAppenderSkeleton* appender) const {
  for (const std::shared_ptr<LOGAppenderBundle>& bundle : m_bundles) {
    if (bundle->appender() == appender) return bundle;
  }
  return nullptr;
}

void LOGDOMConfigurator::putIntoBag(const I18NString& name, std::shared_ptr<LOGAppenderBundle> bundle) {
  LOGAppenderSkeleton* const appender = bundle->appender();
  m_bundles.push_back(std::move(bundle));  // first: the bag does not keep what is in it
  m_appenderBag.remove(name);
  m_appenderBag.put(name, appender);
}

// What is stale will never be handed out again. It stays for one more run, because a program may have got it from a
// logger. Runs at the end of every run, whatever has ended it, so it only moves what there is.
void LOGDOMConfigurator::retireStaleAppenders() {
  for (auto each = m_bundles.begin(); each != m_bundles.end();) {
    const auto bundle = each++;
    LOGAppenderSkeleton* const appender = (*bundle)->appender();
    if (!appender->isStale()) continue;
    if (m_appenderBag.get(appender->getName()) == appender) m_appenderBag.remove(appender->getName());
    m_retired.splice(m_retired.end(), m_bundles, bundle);
  }
}

// Whether the document names a logger that has it.
bool LOGDOMConfigurator::isReplacedBy(const VRKIDOM_Element& root, LOGAppenderSkeleton* appender) const {
  const std::vector<VRKIDOM_Element> children = logChildElements(root);
  return std::any_of(children.begin(), children.end(), [&](const VRKIDOM_Element& child) {
    const I18NString tag = child.getTagName();
    LOGLogger* logger = nullptr;
    if (tag == LOGGER || tag == CATEGORY) logger = m_repository->exists(child.getAttribute(LOG4VRK_NAME_ATTR));
    if (tag == ROOT_TAG) logger = m_repository->getRootLogger();
    return logger != nullptr && logger->isAttached(appender);
  });
}

// A queue that is closed delivers everything first, however long its sink hangs: who left its dispatcher to itself
// would lose the rest when another logger of the document closes the sink. So that is waited for while others can log.
void LOGDOMConfigurator::drainWhatIsReplacedBy(const VRKIDOM_Element& root) const {
  if (m_repository == nullptr) return;
  for (const std::shared_ptr<LOGAppenderBundle>& bundle : m_bundles) {
    LOGAppenderSkeleton& appender = *bundle->appender();
    const LOGAppenderInternals* const internals = LOGAppenderInternals::of(appender);
    if (internals == nullptr || internals->drain == nullptr) continue;
    while (isReplacedBy(root, &appender) && !internals->drain(appender)) {
    }
  }
}
