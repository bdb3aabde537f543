#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

struct DOMConfiguratorTest : testing::Test {
  int configure(const std::string& content) {
    return LOG4VRKConfigurator::initialize(
        dir.write("log.xml", "<log4j:configuration threshold='ALL'>" + content + "</log4j:configuration>").c_str());
  }
  std::string fileAppender(const std::string& name, const std::string& more = "") {
    return "<appender name='" + name + "' class='FileAppender'><param name='File' value='" + dir.file(name + ".log") +
           "'/><layout class='SimpleLayout'/>" + more + "</appender>";
  }

  TempDir dir;
  InternalLog internalLog;
};

// The whole report of a run, to the character: people read these lines, and programs look for them.
TEST_F(DOMConfiguratorTest, ReportsEveryStepOfARun) {
  const std::string golden = LOG4VRK_SOURCE_DIR "/tests/config/golden/";
  std::filesystem::current_path(dir.path());
  EXPECT_EQ(1, LOG4VRKConfigurator::initialize((golden + "report.xml").c_str()));
  EXPECT_EQ(fileText(golden + "report.txt"), internalLog.text());
  EXPECT_EQ(nullptr, LOGManager::exists("report.z"));
}

TEST_F(DOMConfiguratorTest, WritesWhatTheDocumentSays) {
  const std::string saying =
      "<filter class='StringMatchFilter'><param name='StringToMatch' value='said'/></filter>"
      "<filter class='NoSuchFilter'/>";
  const std::string range =
      "<filter class='LevelRangeFilter'><param name='LevelMin' value='INFO'/><param name='LevelMax' value='WARN'/>"
      "</filter>";
  EXPECT_EQ(1, configure(fileAppender("all", saying) + fileAppender("some", range) + fileAppender("unused") +
                         "<logger name='say'><level value='DEBUG'/><appender-ref ref='all'/></logger>"
                         "<logger name='say.quiet' additivity='False'><appender-ref ref='some'/></logger>"));
  LOGManager::getLogger("say.it")->debug("said");
  for (LOGLevel* level : {LOGLevel::DEBUG_OBJ, LOGLevel::INFO_OBJ, LOGLevel::WARN_OBJ, LOGLevel::ERROR_OBJ}) {
    LOGManager::getLogger("say.quiet")->log(level, level->toString());
  }
  EXPECT_EQ("said\n", dir.read("all.log"));
  EXPECT_EQ("INFO\nWARN\n", dir.read("some.log"));
  EXPECT_FALSE(std::filesystem::exists(dir.file("unused.log"))) << "an appender that nothing refers to is not made";
}

TEST_F(DOMConfiguratorTest, TakesTheParametersOfEachClassAndNoOthers) {
  VRKConfigurationFactory::getInstance().setBaseDirectory(dir.file("work").c_str());
  EXPECT_EQ(
      1,
      configure(
          "<appender name='R' class='RollingFileAppender'><param name='File' value='" + dir.file("r.log") +
          "'/><param name='MaximumFileSize' value='1MB'/><param name='MaxBackupIndex' value='7'/>"
          "<param name='Append' value='no'/><param name='append' value='false'/><param name='Threshold' value='WARN'/>"
          "<layout class='TTCCLayout'><param name='dateformat' value='NULL'/><param name='TIMEZONE' value='UTC'/>"
          "<param name='ThreadPrinting' value='false'/></layout></appender>"
          "<appender name='S' class='SyslogAppender'><param name='Host' value='127.0.0.2'/>"
          "<param name='Facility' value='LOCAL5'/><param name='facility' value='mail'/></appender>"
          "<appender name='L' class='com.acme.LogLocalUDPAppender'><param name='Port' value='17'/>"
          "<param name='port' value='1'/></appender>"
          "<appender name='T' class='org.example.LogTCPSocketAppender'><param name='REMOTEHOST' value='::1'/>"
          "<param name='port' value='1'/><param name='Secure' value='no'/>"
          "<param name='locationinfo' value='FALSE'/><param name='ReconnectionDelay' value='5000'/></appender>"
          "<logger name='param'><appender-ref ref='R'/><appender-ref ref='S'/><appender-ref ref='L'/>"
          "<appender-ref ref='T'/></logger>"));
  LOGLogger* const logger = LOGManager::getLogger("param");
  const auto& rolling = dynamic_cast<LOGRollingFileAppender&>(*logger->getAppender("R"));
  EXPECT_TRUE(rolling.getMaximumFileSize() == 1 && rolling.getMaxBackupIndex() == 7 && rolling.getAppend() == 1);
  EXPECT_EQ(nullptr, rolling.getThreshold());
  EXPECT_EQ(1, dynamic_cast<LOGTTCCLayout&>(*rolling.getLayout()).getThreadPrinting());
  const auto& syslog = dynamic_cast<LOGSyslogAppender&>(*logger->getAppender("S"));
  EXPECT_TRUE(syslog.getSyslogHost() == "127.0.0.2" && syslog.getFacility() == "local5");
  EXPECT_EQ(17, dynamic_cast<LOGLocalUDPAppender&>(*logger->getAppender("L")).getPort());
  const auto& tcp = dynamic_cast<LOGTCPSocketAppender&>(*logger->getAppender("T"));
  EXPECT_TRUE(tcp.getRemoteHost() == "::1" && tcp.getPort() == 1 && tcp.getReconnectionDelay() == 5000);
  EXPECT_TRUE(tcp.getSecure() == 1 && tcp.getLocationInfo() == 0) << "only false is not true";
  logger->removeAllAppenders();
}

TEST_F(DOMConfiguratorTest, ReducesClassNamesAtTheLastDot) {
  const std::pair<const char*, const char*> cases[] = {{"a.b.C", "C"}, {"C", "C"},  {"a.b.", "a.b."},
                                                       {"", ""},       {".C", "C"}, {".", "."}};
  for (const auto& [name, reduced] : cases) EXPECT_EQ(I18NString(reduced), LOGDOMConfigurator::subst(name)) << name;
}

TEST_F(DOMConfiguratorTest, GoesOnWithWhatCouldBeConfigured) {
  EXPECT_EQ(1, configure(fileAppender("ok") + fileAppender("no/directory") +
                         "<logger name='bad'><level value='no level'/><appender-ref ref='no/directory'/>"
                         "<appender-ref ref='ok'/></logger>"));
  LOGManager::getLogger("bad")->info("event");
  EXPECT_TRUE(
      internalLog.contains("log4vrk: LOGFileAppender::setFile -- " + dir.file("no") + " directory does not exist"));
  EXPECT_EQ("event\n", dir.read("ok.log"));
}

TEST_F(DOMConfiguratorTest, RefusesALoggerWhoseNameHasMoreThan1000Characters) {
  const std::string longest(1000, 'n'), shown(100, 'n');
  const InternalLog log;
  EXPECT_EQ(1, configure("<logger name='" + longest + "'/><logger name='" + longest + "n'/>" +
                         fileAppender("named", "<errorHandler class='LOGOnlyOnceErrorHandler'><logger-ref ref='" +
                                                   longest + ".h'/></errorHandler>") +
                         "<logger name='named'><appender-ref ref='named'/></logger>"));
  EXPECT_EQ(log.count("log4vrk:ERROR Logger name [" + shown + "...] is longer than 1000 characters. Ignoring it."), 2);
  EXPECT_TRUE(LOGManager::exists(longest.c_str()) != nullptr && LOGManager::exists((longest + "n").c_str()) == nullptr);
}

TEST_F(DOMConfiguratorTest, WithoutARepositoryReportsEveryElementThatNeedsOne) {
  const VRKIDOM_Document document = VRKIDOM_Parser().parse(
      dir.write("log.xml", "<log4j:configuration><logger name='a'/><root/></log4j:configuration>").c_str());
  LOGDOMConfigurator configurator;
  EXPECT_EQ(1, configurator.doConfigure(document.getDocumentElement(), nullptr));
  for (const char* operation : {"parseLogger", "parseRoot"}) {
    EXPECT_EQ(internalLog.count(std::string("log4vrk:ERROR LOGDOMConfigurator::") + operation +
                                " -- unable to lock mutex VRKAssertError: VRK_ASSERT(m_repository);"),
              1);
  }
}

TEST_F(DOMConfiguratorTest, RefusesWhatIsNoConfigurationAndChangesNothing) {
  EXPECT_EQ(1, configure(fileAppender("kept") + "<logger name='kept'><appender-ref ref='kept'/></logger>"));
  for (const char* document : {"<log4j:configuration><root>", "<log4j:config><root/></log4j:config>"}) {
    EXPECT_EQ(0, LOG4VRKConfigurator::initialize(dir.write("bad.xml", document).c_str())) << document;
  }
  LOGManager::getLogger("kept")->info("still here");
  EXPECT_EQ("still here\n", dir.read("kept.log"));
}

}  // namespace

// A program may have got it from a logger. The address sanitizer sees it when it does not.
TEST(LOGDOMConfigurator, WhatARunReplacesLivesUntilTheNextOne) {
  const TempDir dir;
  const std::string document = fileDocument(dir);
  LOGLogger* const root = LOGManager::getRootLogger();
  LOG4VRKConfigurator::initialize(document.c_str());
  LOGAppenderSkeleton* const before = root->getAppender("file");
  LOG4VRKConfigurator::initialize(document.c_str());
  EXPECT_TRUE(before->getName() == "file" && root->getAppender("file") != before);
  LOG4VRKConfigurator::shutdown();
}
