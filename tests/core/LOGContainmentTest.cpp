#include "tests/support/Tests.h"

using namespace vrktest;

TEST(LOGContainment, WhatCannotBeLockedIsReportedInTheOperationsWordsAndRaisedOrNot) {
  const TempDir dir;
  RecordingAppender appender("x");
  Tree tree;
  LOGLogger& logger = *tree.getLogger("a");
  logger.addAppender(&appender);
  LOGLoggingEvent event("LOGLogger", &logger, LOGLevel::INFO_OBJ, nullptr);
  LOGLayout layout;
  LOGErrorHandler refused;
  LOGFileAppender file, open(&layout, dir.file("log").c_str());
  LOGRollingFileAppender rolling;
  LOGConsoleAppender console;
  LOGSyslogAppender syslog;
  const std::string ANY = " -- unable to lock mutex", NOT_OPENED = " -- some VRKThrowable exception occurred";
  const struct {
    std::string line;
    std::function<void()> call;
    bool raises;
  } CASES[] = {
      {"LOGHierarchy::getLogger" + ANY, [&] { tree.getLogger("new"); }, true},
      {"LOGHierarchy::setThreshold" + ANY, [&] { tree.setThreshold(LOGLevel::ALL_OBJ); }, true},
      {"LOGHierarchy::fireAddAppenderEvent" + ANY, [&] { tree.fireAddAppenderEvent(&logger, &appender); }, true},
      {"LOGLogger::addAppender" + ANY, [&] { logger.addAppender(&appender); }, true},
      {"LOGLogger::callAppenders" + ANY, [&] { logger.callAppenders(&event); }, true},
      {"LOGLogger::callAppenders" + ANY, [&] { logger.forcedLog("fqn", LOGLevel::INFO_OBJ, nullptr); }, false},
      {"LOGLogger::closeNestedAppenders" + ANY, [&] { logger.closeNestedAppenders(); }, true},
      {"LOGLogger::getAllAppenders" + ANY, [&] { logger.getAllAppenders(); }, true},
      {"LOGLogger::getAppender" + ANY, [&] { logger.getAppender("x"); }, true},
      {"LOGLogger::isAttached" + ANY, [&] { logger.isAttached(&appender); }, true},
      {"LOGLogger::removeAllAppenders" + ANY, [&] { logger.removeAllAppenders(); }, true},
      {"LOGLogger::removeAppender" + ANY, [&] { logger.removeAppender(&appender); }, true},
      {"LOGLogger::removeAppender" + ANY, [&] { logger.removeAppender("x"); }, true},
      {"LOGLogger::setLevel" + ANY, [&] { logger.setLevel(LOGLevel::INFO_OBJ); }, true},
      {"LOGAppenderSkeleton::setErrorHandler" + ANY, [&] { appender.setErrorHandler(&refused); }, false},
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
  for (const auto& c : CASES) {
    const InternalLog log;
    bool raised = false;
    VRKFault::arm(VRKFault::LOCK);
    try {
      c.call();
    } catch (const VRKSystemError&) {
      raised = true;
    }
    VRKFault::disarm();
    EXPECT_EQ(raised, c.raises) << c.line;
    EXPECT_EQ(log.lines().size(), 1u) << log.text();
    EXPECT_EQ(log.text().find("log4vrk:ERROR " + c.line + " VRKSystemError: "), 0u) << log.text();
  }
}
