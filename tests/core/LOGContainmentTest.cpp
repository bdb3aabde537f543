// What each operation does with an error of its lock.

#include "tests/support/Tests.h"

using namespace vrktest;

using LOGContainmentTest = TreeTest;

TEST_F(LOGContainmentTest, WhatCannotBeLockedIsReportedInTheOperationsWordsAndRaisedOrNot) {
  const TempDir dir;
  logger->addAppender(&other);
  LOGLoggingEvent event("LOGLogger", logger, LOGLevel::INFO_OBJ, nullptr);
  LOGLayout layout;
  LOGErrorHandler refused;
  LOGFileAppender file, open(&layout, dir.file("log").c_str());
  LOGRollingFileAppender rolling;
  LOGConsoleAppender console;
  LOGSyslogAppender syslog;
  const std::string ANY = " -- unable to lock mutex", NOT_OPENED = " -- some VRKThrowable exception occurred";
  const std::tuple<std::string, std::function<void()>, bool> CASES[] = {
      {"LOGHierarchy::getLogger" + ANY, [&] { tree.getLogger("new"); }, true},
      {"LOGHierarchy::setThreshold" + ANY, [&] { tree.setThreshold(LOGLevel::ALL_OBJ); }, true},
      {"LOGHierarchy::fireAddAppenderEvent" + ANY, [&] { tree.fireAddAppenderEvent(logger, &other); }, true},
      {"LOGLogger::addAppender" + ANY, [&] { logger->addAppender(&other); }, true},
      {"LOGLogger::callAppenders" + ANY, [&] { logger->callAppenders(&event); }, true},
      {"LOGLogger::callAppenders" + ANY, [&] { logger->forcedLog("fqn", LOGLevel::INFO_OBJ, nullptr); }, false},
      {"LOGLogger::closeNestedAppenders" + ANY, [&] { logger->closeNestedAppenders(); }, true},
      {"LOGLogger::getAllAppenders" + ANY, [&] { logger->getAllAppenders(); }, true},
      {"LOGLogger::getAppender" + ANY, [&] { logger->getAppender("other"); }, true},
      {"LOGLogger::isAttached" + ANY, [&] { logger->isAttached(&other); }, true},
      {"LOGLogger::removeAllAppenders" + ANY, [&] { logger->removeAllAppenders(); }, true},
      {"LOGLogger::removeAppender" + ANY, [&] { logger->removeAppender(&other); }, true},
      {"LOGLogger::removeAppender" + ANY, [&] { logger->removeAppender("other"); }, true},
      {"LOGLogger::setLevel" + ANY, [&] { logger->setLevel(LOGLevel::INFO_OBJ); }, true},
      {"LOGAppenderSkeleton::setErrorHandler" + ANY, [&] { other.setErrorHandler(&refused); }, false},
      {"LOGFileAppender::setFileOptions" + NOT_OPENED, [&] { file.setFile("x", 1, 0, 0); }, false},
      {"LOGRollingFileAppender::setFile" + NOT_OPENED, [&] { rolling.setFile("x", 1, 0, 0); }, false},
      {"LOGConsoleAppender::setTarget" + NOT_OPENED, [&] { console.setTarget("out"); }, false},
      {"LOGConsoleAppender::activateOptions" + NOT_OPENED, [&] { console.activateOptions(); }, false},
      {"LOGWriterAppender::close" + ANY, [&] { open.close(); }, false},
      {"LOGWriterAppender::setWriter" + ANY, [&] { open.setWriter(nullptr); }, false},
      {"LOGWriterAppender::setErrorHandler" + ANY, [&] { open.setErrorHandler(nullptr); }, false},
      {"LOGSyslogAppender::append --- enable to lock mutex.", [&] { syslog.append(&event); }, false},
      {"LOGSyslogAppender::close ---- Unable to lock mutex.", [&] { syslog.close(); }, false},
  };
  for (const auto& [line, call, raises] : CASES) {
    const InternalLog reported;
    VRKFault::arm(VRKFault::LOCK);
    if (raises) {
      EXPECT_THROW(call(), VRKSystemError) << line;
    } else {
      EXPECT_NO_THROW(call()) << line;
    }
    VRKFault::disarm();
    EXPECT_EQ(reported.lines().size(), 1u) << reported.text();
    EXPECT_EQ(reported.text().find("log4vrk:ERROR " + line + " VRKSystemError: "), 0u) << reported.text();
  }
}
