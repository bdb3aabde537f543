#include "log4vrk/config/LOGXMLWatchdog.h"

#include "log4vrk/config/LOGDOMConfigurator.h"

LOGXMLWatchdog::LOGXMLWatchdog(const I18NString& fileName) : LOGFileWatchdog(fileName, LookLater()) {
  checkAndConfigure();
}

LOGXMLWatchdog::~LOGXMLWatchdog() { stop(); }

void LOGXMLWatchdog::doOnChange() { LOGDOMConfigurator::configure(fileName()); }
