// The configurator: builds loggers and appenders from an XML document.

#pragma once

#include <list>
#include <memory>
#include <vector>

#include "log4vrk/config/LOGConfigurator.h"
#include "log4vrk/core/LOGHashtable.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKIDOM.h"
#include "log4vrk/platform/VRKThreadCriticalSection.h"

class LOGAppenderBundle;
class LOGAppenderSkeleton;
class LOGLogger;
class LOGObject;

/// Reads a document whose root is "log4j:configuration" and configures a repository by it. Appenders are made when
/// something refers to them, and are shared by name, also with later runs, unless they have become stale. What the
/// document says wrongly is written to the internal log or ignored; the rest is configured.
///
/// A program uses LOG4VRKConfigurator.
///
/// Thread safety: any thread; a second run waits for the first. Threads that log meanwhile see the tree as it was
/// before or as it is after. From inside a log call (an appender, a renderer, a listener) a run is refused and
/// reported. A thread that is cancelled ends after the run.
/// Ownership: appenders made here live as long as something has them attached, and for one run longer.
/// Failures: nothing is raised.
class LOG4VRK_EXPORT LOGDOMConfigurator : public LOGConfigurator {
 public:
  // The vocabulary of the document.
  static const I18NString& CONFIGURATION_TAG;
  static const I18NString& OLD_CONFIGURATION_TAG;
  static const I18NString& RENDERER_TAG;
  static const I18NString& APPENDER_TAG;
  static const I18NString& APPENDER_REF_TAG;
  static const I18NString& PARAM_TAG;
  static const I18NString& LAYOUT_TAG;
  static const I18NString& CATEGORY;
  static const I18NString& LOGGER;
  static const I18NString& LOGGER_REF;
  static const I18NString& CATEGORY_FACTORY_TAG;
  static const I18NString& LOG4VRK_NAME_ATTR;
  static const I18NString& CLASS_ATTR;
  static const I18NString& VALUE_ATTR;
  static const I18NString& ROOT_TAG;
  static const I18NString& ROOT_REF;
  static const I18NString& LEVEL_TAG;
  static const I18NString& PRIORITY_TAG;
  static const I18NString& FILTER_TAG;
  static const I18NString& ERROR_HANDLER_TAG;
  static const I18NString& REF_ATTR;
  static const I18NString& ADDITIVITY_ATTR;
  static const I18NString& THRESHOLD_ATTR;
  static const I18NString& CONFIG_DEBUG_ATTR;
  static const I18NString& INTERNAL_DEBUG_ATTR;
  static const I18NString& SUBSTITUTE_ATTR;
  static const I18NString& RENDERING_CLASS_ATTR;
  static const I18NString& RENDERED_CLASS_ATTR;
  static const I18NString& EMPTY_STR;
  static const I18NString& ONE_STRING_PARAM;
  static const I18NString& dbfKey;

  LOGDOMConfigurator();
  ~LOGDOMConfigurator() override;

  /// Makes the instance that configure() uses, unless there is one.
  static void initialize();
  /// Lets go of it. A run that is going on keeps it until it ends.
  static void shutdown();

  // Configure the repository of LOGManager. 1 when the document was read and applied, else 0.
  static int configure(const I18NString& fileName);
  static int configure(VRKIDOM_Element root);
  /// Does nothing, on purpose: the file is not even read. A program that wants to follow a file starts a
  /// LOGXMLWatchdog.
  static void configureAndWatch(const I18NString& fileName);
  static void configureAndWatch(const I18NString& fileName, long delay);

  int doConfigure(const I18NString& fileName, LOGLoggerRepository* repository) override;
  int doConfigure(const char* fileName, LOGLoggerRepository* repository);
  int doConfigure(VRKIDOM_Element root, LOGLoggerRepository* repository);

  /// What follows the last dot; the whole text when there is no dot, or nothing after it.
  static I18NString subst(const I18NString& className);

 private:
  class Run;
  class Parsing;

  template <typename Operation>
  int configureOnce(LOGLoggerRepository* repository, Operation operation);
  LOG4VRK_HIDDEN int parse(const VRKIDOM_Element& root);
  LOG4VRK_HIDDEN void parseAttributes(const VRKIDOM_Element& root);
  LOG4VRK_HIDDEN void parseCategoryFactory(const VRKIDOM_Element& element);
  LOG4VRK_HIDDEN void parseRenderer(const VRKIDOM_Element& element);
  LOG4VRK_HIDDEN void parseLogger(const VRKIDOM_Element& element);
  static bool isLoggerName(const I18NString& name);
  LOG4VRK_HIDDEN LOGLogger* findLogger(const VRKIDOM_Element& element);
  LOG4VRK_HIDDEN void parseRoot(const VRKIDOM_Element& element);
  LOG4VRK_HIDDEN void parseChildrenOfLoggerElement(const VRKIDOM_Element& element, LOGLogger* logger, bool isRoot);
  LOG4VRK_HIDDEN void parseAppenderRef(const VRKIDOM_Element& element, LOGLogger* logger);
  LOG4VRK_HIDDEN void parseLevel(const VRKIDOM_Element& element, LOGLogger* logger, bool isRoot);

  LOG4VRK_HIDDEN LOGAppenderSkeleton* findAppenderByReference(const VRKIDOM_Element& reference);
  LOG4VRK_HIDDEN LOGAppenderSkeleton* findAppenderByName(const I18NString& name, const VRKIDOM_Element& reference);
  LOG4VRK_HIDDEN std::shared_ptr<LOGAppenderBundle> parseAppender(const VRKIDOM_Element& element);
  LOG4VRK_HIDDEN std::shared_ptr<LOGAppenderBundle> makeAppender(const VRKIDOM_Element& element);
  LOG4VRK_HIDDEN void parseAppenderChild(const VRKIDOM_Element& child, LOGAppenderBundle& bundle);
  LOG4VRK_HIDDEN void parseLayout(const VRKIDOM_Element& element, LOGAppenderBundle& bundle);
  LOG4VRK_HIDDEN void parseFilters(const VRKIDOM_Element& element, LOGAppenderBundle& bundle);
  LOG4VRK_HIDDEN void parseErrorHandler(const VRKIDOM_Element& element, LOGAppenderBundle& bundle);
  LOG4VRK_HIDDEN void parseNestedAppender(const VRKIDOM_Element& reference, LOGAppenderSkeleton* appender);
  LOG4VRK_HIDDEN void setParameter(const VRKIDOM_Element& element, LOGObject& target) const;
  LOG4VRK_HIDDEN void setParameters(const VRKIDOM_Element& parent, LOGObject& target) const;

  LOG4VRK_HIDDEN void putIntoBag(const I18NString& name, std::shared_ptr<LOGAppenderBundle> bundle);
  LOG4VRK_HIDDEN void retireStaleAppenders();
  LOG4VRK_HIDDEN bool isReplacedBy(const VRKIDOM_Element& root, LOGAppenderSkeleton* appender) const;
  LOG4VRK_HIDDEN void drainWhatIsReplacedBy(const VRKIDOM_Element& root) const;
  LOG4VRK_HIDDEN std::shared_ptr<LOGAppenderBundle> bundleOf(const LOGAppenderSkeleton* appender) const;

  VRKThreadCriticalSection m_critSection{0};

  // Touched by the one run that is going on.
  LOGLoggerRepository* m_repository = nullptr;
  bool m_hasVariables = false;  // values of the document may name variables
  LOGHashtable m_appenderBag;
  std::list<std::shared_ptr<LOGAppenderBundle>> m_bundles;  // those in the bag
  std::list<std::shared_ptr<LOGAppenderBundle>>
      m_retired;                          // what the last run replaced; a program may look at it still
  std::vector<I18NString> m_beingParsed;  // an appender must not lead to itself
};
