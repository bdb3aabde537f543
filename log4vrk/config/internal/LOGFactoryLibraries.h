// The logger factories that documents name.

#pragma once

#include "log4vrk/platform/I18NString.h"

class LOGLoggerFactory;

/// A factory of the class ShopLoggerFactory comes from the library libShopLoggerFactory.so, by its function
/// `extern "C" LOGLoggerFactory* getLoggerFactory()`. Both are kept for good, one for each class name, because loggers
/// live in them.
///
/// Thread safety: the configurator's runs, one at a time.
class LOGFactoryLibraries {
 public:
  /// Makes the factory of that class the current one. Raises VRKAssertError when there is no such library, or no
  /// function in it.
  static void use(const I18NString& className);
  /// Null before the first use(). Stays for later documents.
  static LOGLoggerFactory* current();
};
