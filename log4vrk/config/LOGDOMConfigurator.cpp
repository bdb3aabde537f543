#include "log4vrk/config/LOGDOMConfigurator.h"

#include <algorithm>

#include "log4vrk/config/internal/LOGDOMChildren.h"
#include "log4vrk/config/internal/LOGDocumentRefusal.h"
#include "log4vrk/config/internal/LOGDocumentTables.h"
#include "log4vrk/config/internal/LOGFactoryLibraries.h"
#include "log4vrk/config/internal/LOGVariables.h"
#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGHierarchy.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggerRepository.h"
#include "log4vrk/core/LOGManager.h"
#include "log4vrk/core/LOGRendererMap.h"
#include "log4vrk/core/internal/LOGAppenderBundle.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGDeferral.h"
#include "log4vrk/core/internal/LOGProblems.h"
#include "log4vrk/core/internal/LOGShutdownHook.h"
#include "log4vrk/core/internal/LOGTimeLimit.h"
#include "log4vrk/net/LOGSyslogWriter.h"
#include "log4vrk/net/internal/LOGSyslogHosts.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/internal/VRKDocumentError.h"
#include "log4vrk/platform/internal/VRKFork.h"
#include "log4vrk/platform/internal/VRKMutex.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

const I18NString& LOGConfigurator::m_INHERITED = vrkImmortal<I18NString>("inherited");

const I18NString& LOGDOMConfigurator::CONFIGURATION_TAG = vrkImmortal<I18NString>("log4j:configuration");
const I18NString& LOGDOMConfigurator::OLD_CONFIGURATION_TAG = vrkImmortal<I18NString>("configuration");
const I18NString& LOGDOMConfigurator::RENDERER_TAG = vrkImmortal<I18NString>("renderer");
const I18NString& LOGDOMConfigurator::APPENDER_TAG = vrkImmortal<I18NString>("appender");
const I18NString& LOGDOMConfigurator::APPENDER_REF_TAG = vrkImmortal<I18NString>("appender-ref");
const I18NString& LOGDOMConfigurator::PARAM_TAG = vrkImmortal<I18NString>("param");
const I18NString& LOGDOMConfigurator::LAYOUT_TAG = vrkImmortal<I18NString>("layout");
const I18NString& LOGDOMConfigurator::CATEGORY = vrkImmortal<I18NString>("category");
const I18NString& LOGDOMConfigurator::LOGGER = vrkImmortal<I18NString>("logger");
const I18NString& LOGDOMConfigurator::LOGGER_REF = vrkImmortal<I18NString>("logger-ref");
const I18NString& LOGDOMConfigurator::CATEGORY_FACTORY_TAG = vrkImmortal<I18NString>("categoryFactory");
const I18NString& LOGDOMConfigurator::LOG4VRK_NAME_ATTR = vrkImmortal<I18NString>("name");
const I18NString& LOGDOMConfigurator::CLASS_ATTR = vrkImmortal<I18NString>("class");
const I18NString& LOGDOMConfigurator::VALUE_ATTR = vrkImmortal<I18NString>("value");
const I18NString& LOGDOMConfigurator::ROOT_TAG = vrkImmortal<I18NString>("root");
const I18NString& LOGDOMConfigurator::ROOT_REF = vrkImmortal<I18NString>("root-ref");
const I18NString& LOGDOMConfigurator::LEVEL_TAG = vrkImmortal<I18NString>("level");
const I18NString& LOGDOMConfigurator::PRIORITY_TAG = vrkImmortal<I18NString>("priority");
const I18NString& LOGDOMConfigurator::FILTER_TAG = vrkImmortal<I18NString>("filter");
const I18NString& LOGDOMConfigurator::ERROR_HANDLER_TAG = vrkImmortal<I18NString>("errorHandler");
const I18NString& LOGDOMConfigurator::REF_ATTR = vrkImmortal<I18NString>("ref");
const I18NString& LOGDOMConfigurator::ADDITIVITY_ATTR = vrkImmortal<I18NString>("additivity");
const I18NString& LOGDOMConfigurator::THRESHOLD_ATTR = vrkImmortal<I18NString>("threshold");
const I18NString& LOGDOMConfigurator::CONFIG_DEBUG_ATTR = vrkImmortal<I18NString>("configDebug");
const I18NString& LOGDOMConfigurator::INTERNAL_DEBUG_ATTR = vrkImmortal<I18NString>("debug");
const I18NString& LOGDOMConfigurator::SUBSTITUTE_ATTR = vrkImmortal<I18NString>("substitute");
const I18NString& LOGDOMConfigurator::RENDERING_CLASS_ATTR = vrkImmortal<I18NString>("renderingClass");
const I18NString& LOGDOMConfigurator::RENDERED_CLASS_ATTR = vrkImmortal<I18NString>("renderedClass");
const I18NString& LOGDOMConfigurator::EMPTY_STR = vrkImmortal<I18NString>();
const I18NString& LOGDOMConfigurator::ONE_STRING_PARAM = vrkImmortal<I18NString>();
const I18NString& LOGDOMConfigurator::dbfKey = vrkImmortal<I18NString>("LOGDocumentBuilderFactory");

LOGConfigurator::~LOGConfigurator() = default;

namespace {

VRKMutex g_instanceMutex;
std::shared_ptr<LOGDOMConfigurator>& g_instance VRK_GUARDED_BY(g_instanceMutex) =
    vrkImmortal<std::shared_ptr<LOGDOMConfigurator>>();

// Held for a whole run. Taken before everything else.
VRKThreadCriticalSection& configurationLock() {
  static VRKThreadCriticalSection& lock = vrkImmortal<VRKThreadCriticalSection>();
  return lock;
}

// A run that is going on may be waiting for a log call to end, so a fork from inside one must not wait for the run.
void lockConfiguration() VRK_NO_THREAD_SAFETY_ANALYSIS {
  if (!LOGDeferral::active()) configurationLock().lock();
}
void unlockConfiguration() VRK_NO_THREAD_SAFETY_ANALYSIS {
  if (!LOGDeferral::active()) configurationLock().unlock();
}

// After the gate's handlers, so that it prepares before them: a run that is going on has to end before the gate can be
// closed.
[[maybe_unused]] const bool g_forksWatched =
    (LOGGate::watchForks(), vrkAtFork(&lockConfiguration, &unlockConfiguration, &unlockConfiguration), true);

std::shared_ptr<LOGDOMConfigurator> instance() {
  auto made = std::make_shared<LOGDOMConfigurator>();
  const LOGLeafGuard guard(g_instanceMutex);
  if (!g_instance) g_instance = std::move(made);
  return g_instance;
}

constexpr LOGFailureTexts CONFIGURE_FAILURES{"LOGDOMConfigurator::doConfigure -- some i18nstring exception occurred",
                                             "LOGDOMConfigurator::doConfigure -- some VRKThrowable exception occurred",
                                             "LOGDOMConfigurator::doConfigure -- An unknown exception has occurred."};

// What was logged before a run and what the run is going to need is waited for while others can log.
constexpr std::chrono::milliseconds LONGEST_PREPARATION{6000}, LONGEST_WAIT_AT_REST{50};

// Where the syslog appenders of a document will send to, each host once.
std::vector<I18NString> syslogHosts(const VRKIDOM_Element& root) {
  const bool hasVariables = LOGVariables::areWanted(root);
  std::vector<I18NString> hosts;
  const auto add = [&](const I18NString& host) {
    if (std::find(hosts.begin(), hosts.end(), host) == hosts.end()) hosts.push_back(host);
  };
  for (const VRKIDOM_Element& element : logChildElements(root)) {
    const bool isSyslog =
        element.getTagName() == LOGDOMConfigurator::APPENDER_TAG &&
        element.getAttribute(LOGDOMConfigurator::CLASS_ATTR).findLast("SyslogAppender") != I18NString::npos;
    if (!isSyslog) continue;
    bool namesOne = false;
    for (const VRKIDOM_Element& child : logChildElements(element)) {
      if (child.getAttribute(LOGDOMConfigurator::LOG4VRK_NAME_ATTR) != "Host") continue;
      std::string problem;  // is told when the parameter is set
      const I18NString host = LOGVariables::valueOf(child, hasVariables, problem);
      if (host.isEmpty()) continue;
      add(host);
      namesOne = true;
    }
    if (namesOne) continue;
    const I18NString last = LOGSyslogWriter::getSyslogHost();
    add(last.isEmpty() ? I18NString("localhost") : last);
  }
  return hosts;
}

bool isGiven(const I18NString& attribute) { return !attribute.isEmpty() && attribute != "null"; }

[[maybe_unused]] const bool g_endsWithTheHierarchy = LOGShutdownHook::set(&LOGDOMConfigurator::shutdown);

}  // namespace

// One configuration run: log calls put off, no other run at the same time, and the appenders of the run before let go.
class LOGDOMConfigurator::Run {
 public:
  Run(LOGDOMConfigurator& configurator, LOGLoggerRepository* repository)
      : m_guard(configurationLock()), m_configurator(configurator) {
    configurator.m_repository = repository;
    configurator.m_retired.clear();
  }
  ~Run() {
    m_configurator.retireStaleAppenders();
    m_configurator.m_repository = nullptr;
    m_delivering.begin();
  }

 private:
  VRKNoCancellation m_finished;     // of half a run nobody could tell what it has left
  LOGProblems::Pause m_delivering;  // what was put off has problems of its own
  LOGDeferral m_deferral;           // before the lock: what was put off is delivered when the run is over
  VRKThreadGuard m_guard;
  LOGDOMConfigurator& m_configurator;
};

LOGDOMConfigurator::LOGDOMConfigurator() {
  if (m_appenderBag.capacity() == 0) throw VRKOutOfMemoryError(VRK_HERE);  // it would take nothing, for good
  VRKIDOM_DOMImplementation::initialize();
}

LOGDOMConfigurator::~LOGDOMConfigurator() { VRKIDOM_DOMImplementation::terminate(); }

void LOGDOMConfigurator::initialize() { static_cast<void>(instance()); }

void LOGDOMConfigurator::shutdown() {
  std::shared_ptr<LOGDOMConfigurator> last;  // freed after the lock: its appenders may have to be closed
  const LOGLeafGuard guard(g_instanceMutex);
  last.swap(g_instance);
}

int LOGDOMConfigurator::configure(const I18NString& fileName) {
  const LOGProblems::Run problems([&] { return fileName; });
  return logContainAll(CONFIGURE_FAILURES, 0, [&] {
    if (LOGDocumentRefusal::refuses(fileName)) return 0;
    return instance()->doConfigure(fileName, LOGManager::getLoggerRepository());
  });
}

int LOGDOMConfigurator::configure(VRKIDOM_Element root) {
  const LOGProblems::Run problems([&] { return root.getOwnerDocument().getFileName(); });
  return logContainAll(CONFIGURE_FAILURES, 0,
                       [&] { return instance()->doConfigure(std::move(root), LOGManager::getLoggerRepository()); });
}

void LOGDOMConfigurator::configureAndWatch(const I18NString& fileName) { configureAndWatch(fileName, 0); }

void LOGDOMConfigurator::configureAndWatch(const I18NString&, long) {}

int LOGDOMConfigurator::doConfigure(const I18NString& fileName, LOGLoggerRepository* repository) {
  const LOGProblems::Run problems([&] { return fileName; });
  return logContainAll(CONFIGURE_FAILURES, 0, [&] { return doConfigure(fileName.toBytes().get(), repository); });
}

int LOGDOMConfigurator::doConfigure(const char* fileName, LOGLoggerRepository* repository) {
  const LOGProblems::Run problems([&] { return I18NString(fileName); });
  return configureOnce(repository, [&] {
    VRKIDOM_Document document;
    try {
      VRKIDOM_Parser parser;
      parser.setLoadExternalDTD(0);
      document = parser.parse(fileName);
    } catch (VRKThrowable& error) {
      const auto* const fault = dynamic_cast<const VRKDocumentError*>(&error);
      const LOGProblems::Place place(fault != nullptr ? fault->lineInDocument() : 0);
      LOGLogLog::error("Could not parse the document", error);
      return 0;
    }
    return parse(document.getDocumentElement());
  });
}

int LOGDOMConfigurator::doConfigure(VRKIDOM_Element root, LOGLoggerRepository* repository) {
  const LOGProblems::Run problems([&] { return root.getOwnerDocument().getFileName(); });
  return configureOnce(repository, [&] { return parse(root); });
}

template <typename Operation>
int LOGDOMConfigurator::configureOnce(LOGLoggerRepository* repository, Operation operation) {
  if (LOGDeferral::active()) {
    LOGLogLog::error("LOGDOMConfigurator::doConfigure -- called from inside a log call, ignored");
    return 0;
  }
  return logContainAll(CONFIGURE_FAILURES, 0, [&] {
    const Run run(*this, repository);
    return operation();
  });
}

I18NString LOGDOMConfigurator::subst(const I18NString& className) {
  const std::size_t dot = className.findLast(".");
  if (dot == I18NString::npos || dot + 1 == className.length()) return className;
  return className.substring(dot + 1);
}

int LOGDOMConfigurator::parse(const VRKIDOM_Element& root) {
  const LOGProblems::Place place(root.getLineNumber());
  const I18NString tag = root.getTagName();
  if (tag == OLD_CONFIGURATION_TAG) {
    LOGLogLog::warn("The <" + OLD_CONFIGURATION_TAG + "> element has been deprecated.");
    LOGLogLog::warn("Use the <" + CONFIGURATION_TAG + "> element instead.");
  } else if (tag != CONFIGURATION_TAG) {
    LOGLogLog::error("DOM element is - not a <" + CONFIGURATION_TAG + "> element.");
    return 0;
  }
  m_hasVariables = LOGVariables::areWanted(root);
  auto* const hierarchy = dynamic_cast<LOGHierarchy*>(m_repository);
  LOGSyslogHosts hosts(syslogHosts(root));
  drainWhatIsReplacedBy(root);
  {
    const LOGTimeLimit limit(LONGEST_PREPARATION);
    if (hierarchy != nullptr) hierarchy->drainAppenders();
    hosts.wait();
  }
  // From here on the others see the tree as it was, until it is as it shall be. They wait for that, so nobody else is
  // waited for any more.
  const LOGGate::Closure atRest;
  const LOGTimeLimit limit(LONGEST_WAIT_AT_REST);
  if (hierarchy != nullptr) hierarchy->drainAppenders();
  parseAttributes(root);
  const std::vector<VRKIDOM_Element> children = logChildElements(root);
  for (const VRKIDOM_Element& child : children) {
    if (child.getTagName() == CATEGORY_FACTORY_TAG) parseCategoryFactory(child);
  }
  for (const VRKIDOM_Element& child : children) {
    const I18NString name = child.getTagName();
    if (name == LOGGER || name == CATEGORY) {
      parseLogger(child);
    } else if (name == ROOT_TAG) {
      parseRoot(child);
    } else if (name == RENDERER_TAG) {
      parseRenderer(child);
    }
  }
  return 1;
}

void LOGDOMConfigurator::parseAttributes(const VRKIDOM_Element& root) {
  const I18NString debug = root.getAttribute(INTERNAL_DEBUG_ATTR);
  LOGLogLog::debug(INTERNAL_DEBUG_ATTR + " attributes= \"" + debug + "\"");
  if (isGiven(debug)) {
    // Whatever it says, "false" included: meant so.
    LOGLogLog::setInternalDebugging(1);
  } else {
    LOGLogLog::debug("Ignoring " + INTERNAL_DEBUG_ATTR + " attribute.");
  }
  if (isGiven(root.getAttribute(CONFIG_DEBUG_ATTR))) {
    LOGLogLog::warn("The \"" + CONFIG_DEBUG_ATTR + "\" attribute is deprecated.");
    LOGLogLog::warn("Use the \"" + INTERNAL_DEBUG_ATTR + "\" attribute instead.");
    LOGLogLog::setInternalDebugging(1);
  }
  const I18NString threshold = root.getAttribute(THRESHOLD_ATTR);
  LOGLogLog::debug("Threshold =\"" + threshold + "\"");
  if (isGiven(threshold)) {
    VRK_ASSERT(m_repository);
    m_repository->setThreshold(threshold);
  }
  const I18NString substitute = root.getAttribute(SUBSTITUTE_ATTR);
  if (!substitute.isEmpty() && !m_hasVariables && !vrkEqualIgnoringAsciiCase(substitute, "false")) {
    LOGLogLog::warn("The \"" + SUBSTITUTE_ATTR + "\" attribute is [" + substitute +
                    "], neither true nor false; no variable is put in.");
  }
}

void LOGDOMConfigurator::parseCategoryFactory(const VRKIDOM_Element& element) {
  const LOGProblems::Place place(element.getLineNumber(), "categoryFactory");
  const I18NString className = subst(element.getAttribute(CLASS_ATTR));
  if (className.isEmpty()) {
    LOGLogLog::error("Category Factory tag " + CLASS_ATTR + " attribute not found.");
    LOGLogLog::debug("No Category Factory configured.");
    return;
  }
  LOGLogLog::debug("Desired category factory: [" + className + "]");
  LOGFactoryLibraries::use(className);
}

void LOGDOMConfigurator::parseRenderer(const VRKIDOM_Element& element) {
  logContainAll({"LOGDOMConfigurator::parseRenderer -- unable to lock mutex",
                 "LOGDOMConfigurator::parseRenderer -- unable to lock mutex",
                 "LOGDOMConfigurator::parseRenderer -- An unknown exception has occurred"},
                [&] {
                  const LOGProblems::Place place(element.getLineNumber(), "renderer",
                                                 element.getAttribute(RENDERING_CLASS_ATTR));
                  const VRKThreadGuard guard(m_critSection);
                  LOGRendererMap::addRenderer(dynamic_cast<LOGHierarchy*>(m_repository),
                                              subst(element.getAttribute(RENDERING_CLASS_ATTR)),
                                              subst(element.getAttribute(RENDERED_CLASS_ATTR)));
                });
}

void LOGDOMConfigurator::parseLogger(const VRKIDOM_Element& element) {
  logContainAll({"LOGDOMConfigurator::parseLogger -- unable to lock mutex",
                 "LOGDOMConfigurator::parseLogger -- unable to lock mutex",
                 "LOGDOMConfigurator::parseLogger -- An unknown exception has occurred"},
                [&] {
                  const LOGProblems::Place place(element.getLineNumber(), "logger",
                                                 element.getAttribute(LOG4VRK_NAME_ATTR));
                  const VRKThreadGuard guard(m_critSection);
                  LOGLogger* const logger = findLogger(element);
                  if (logger == nullptr) return;
                  const I18NString additivity = element.getAttribute(ADDITIVITY_ATTR);
                  LOGLogLog::debug("Setting [" + logger->getName() + "] additivity to [" +
                                   (additivity.isEmpty() ? I18NString("true") : additivity) + "].");
                  logger->setAdditivity(vrkEqualIgnoringAsciiCase(additivity, "false") ? 0 : 1);
                  parseChildrenOfLoggerElement(element, logger, false);
                });
}

bool LOGDOMConfigurator::isLoggerName(const I18NString& name) {
  constexpr std::size_t SHOWN = 100;
  if (name.length() <= LOGDocumentTables::LONGEST_LOGGER_NAME) return true;
  LOGLogLog::error("Logger name [" + name.substring(0, SHOWN) + "...] is longer than 1000 characters. Ignoring it.");
  return false;
}

LOGLogger* LOGDOMConfigurator::findLogger(const VRKIDOM_Element& element) {
  const I18NString name = element.getAttribute(LOG4VRK_NAME_ATTR);
  if (!isLoggerName(name)) return nullptr;
  const I18NString className = subst(element.getAttribute(CLASS_ATTR));
  if (className.isEmpty()) {
    LOGLogLog::debug("Retrieving an instance of LOGLogger: " + name);
    VRK_ASSERT(m_repository);
    return m_repository->getLogger(name);
  }
  LOGLogLog::debug("Desired logger sub-class: [" + className + "]");
  LOGLoggerFactory* const factory = LOGFactoryLibraries::current();
  if (factory == nullptr) {
    LOGLogLog::error("Logger Factory missing from config document; please add and restart");
    return nullptr;
  }
  // From the repository of the program, whichever is being configured: factories know no other.
  LOGLogger* const logger = LOGManager::getLogger(name, factory);
  if (logger == nullptr) LOGLogLog::error("Could not retrieve logger [" + name + "]. Reported error follows.");
  return logger;
}

void LOGDOMConfigurator::parseRoot(const VRKIDOM_Element& element) {
  logContainAll(
      {"LOGDOMConfigurator::parseRoot -- unable to lock mutex", "LOGDOMConfigurator::parseRoot -- unable to lock mutex",
       "LOGDOMConfigurator::parseRoot -- An unknown exception has occurred"},
      [&] {
        const LOGProblems::Place place(element.getLineNumber(), "root");
        VRK_ASSERT(m_repository);
        const VRKThreadGuard guard(m_critSection);
        parseChildrenOfLoggerElement(element, m_repository->getRootLogger(), true);
      });
}

void LOGDOMConfigurator::parseChildrenOfLoggerElement(const VRKIDOM_Element& element, LOGLogger* logger, bool isRoot) {
  VRK_ASSERT(logger);
  LOGLogLog::debug("LOGDOMConfigurator::parseChildrenOfLoggerElement : remove all appenders from logger " +
                   logger->getName());
  {
    const VRKThreadGuard guard(m_critSection);
    logger->removeAllAppenders(&m_appenderBag);
  }
  for (const VRKIDOM_Element& child : logChildElements(element)) {
    const I18NString tag = child.getTagName();
    if (tag == APPENDER_REF_TAG) {
      parseAppenderRef(child, logger);
    } else if (tag == LEVEL_TAG || tag == PRIORITY_TAG) {
      parseLevel(child, logger, isRoot);
    } else if (tag == PARAM_TAG) {
      setParameter(child, *logger);
    }
  }
}

void LOGDOMConfigurator::parseAppenderRef(const VRKIDOM_Element& element, LOGLogger* logger) {
  const LOGProblems::Place place(element.getLineNumber());
  const I18NString reference = element.getAttribute(REF_ATTR);
  LOGAppenderSkeleton* const appender = findAppenderByReference(element);
  if (appender == nullptr) {
    LOGLogLog::debug("LOGDOMConfigurator::parseChildrenOfLoggerElement : Appender named [" + reference +
                     "] not found.");
    return;
  }
  LOGLogLog::debug("LOGDOMConfigurator::parseChildrenOfLoggerElement : Adding appender named [" + reference +
                   "] to logger [" + logger->getName() + "].");
  logger->addAppender(appender);
}

void LOGDOMConfigurator::parseLevel(const VRKIDOM_Element& element, LOGLogger* logger, bool isRoot) {
  const LOGProblems::Place place(element.getLineNumber());
  logContainAll({"LOGDOMConfigurator::parseLevel --- An unknown exception has occurred.",
                 "LOGDOMConfigurator::parseLevel --- An unknown exception has occurred.",
                 "LOGDOMConfigurator::parseLevel --- An unknown exception has occurred."},
                [&] {
                  const I18NString name = isRoot ? ROOT_TAG : logger->getName();
                  std::string problem;
                  const I18NString value = LOGVariables::valueOf(element, m_hasVariables, problem);
                  if (!problem.empty()) {
                    LOGLogLog::error("LOGDOMConfigurator::parseLevel -- " + I18NString(std::string_view(problem)) +
                                     "; the level stays as it was.");
                    return;
                  }
                  LOGLogLog::debug("Level value for " + name + " is  [" + value + "].");
                  if (value == m_INHERITED) {
                    if (isRoot) {
                      LOGLogLog::error("Root level cannot be inherited. Ignoring directive.");
                    } else {
                      logger->setLevel(nullptr);
                    }
                    return;
                  }
                  const I18NString className = subst(element.getAttribute(CLASS_ATTR));
                  if (!className.isEmpty()) LOGLogLog::debug("Desired LOGLevel sub-class: [" + className + "]");
                  try {
                    logger->setLevel(LOGLevel::toLevel(value));
                  } catch (VRKThrowable& error) {
                    if (className.isEmpty()) throw;
                    LOGLogLog::error("Could not create level [" + value + "] Reported error follows. ", error);
                    return;
                  }
                  const LOGLevel* const logLevel = logger->getLevel();
                  VRK_ASSERT(logLevel);
                  LOGLogLog::debug(name + " level set to " + logLevel->toString());
                });
}
