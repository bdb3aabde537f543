// The front door: where programs get their loggers.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGHierarchy;
class LOGLogger;
class LOGLoggerFactory;
class LOGLoggerRepository;
class LOGObject;
class LOGRepositorySelector;
template <typename T>
class VRKList;  // log4vrk/platform/VRKList.h

/// Forwards to the repository that the selector names. The first use makes a LOGHierarchy with a root at DEBUG and
/// nothing configured.
///
/// Thread safety: any thread, the first use included.
/// Ownership: the default repository is never destroyed. A selector and its guard are the program's.
class LOG4VRK_EXPORT LOGManager {
 public:
  // Empty, and read by nobody: nothing is configured by itself.
  static const I18NString& m_DEFAULT_CONFIGURATION_FILE;
  static const I18NString& m_DEFAULT_CONFIGURATION_KEY;
  static const I18NString& m_DEFAULT_INIT_OVERRIDE_KEY;
  static const I18NString& m_CONFIGURATOR_CLASS_KEY;

  /// Makes the default repository and its selector. Every operation below does it when there is no selector.
  static void init();
  static LOGLoggerRepository* getLoggerRepository();
  static LOGLogger* getRootLogger();
  static LOGLogger* getLogger(const I18NString& name);
  static LOGLogger* getLogger(const I18NString& name, LOGLoggerFactory* factory);
  static LOGLogger* exists(const I18NString& name);
  static VRKList<LOGLogger*>* getCurrentLoggers();
  static void resetConfiguration();

  /// Does nothing when there is no selector yet.
  static void shutdown();
  static bool hasSelector();

  /// The first guard given may replace the selector again; any other guard changes nothing, and so does a null
  /// selector. A null guard raises VRKAssertError.
  static void setRepositorySelector(LOGRepositorySelector* selector, LOGObject* guard);
};
