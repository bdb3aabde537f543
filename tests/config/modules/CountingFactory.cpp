// Each factory knows its number, and its loggers have it in the name of their class.

#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggerFactory.h"

struct CountingFactory : LOGLoggerFactory {
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override {
    auto* const logger = new LOGLogger(name);
    logger->instance("Counted" + (I18NString() += number));
    return logger;
  }
  int number = 0;
};

extern "C" LOG4VRK_EXPORT LOGLoggerFactory* getLoggerFactory() {
  static int count = 0;
  auto* const factory = new CountingFactory;
  factory->number = ++count;
  return factory;
}
