// A library of logger factories. Each factory has a number, which is in the type name of the loggers that it makes.

#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggerFactory.h"

struct CountingFactory : LOGLoggerFactory {
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override {
    auto* const logger = new LOGLogger(name);
    logger->instance(I18NString("Counted") + number);
    return logger;
  }

  inline static int count = 0;
  const int number = ++count;
};

extern "C" LOG4VRK_EXPORT LOGLoggerFactory* getLoggerFactory() { return new CountingFactory; }
