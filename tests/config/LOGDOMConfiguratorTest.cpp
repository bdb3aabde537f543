#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>

#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/log4vrk.h"
#include "log4vrk/net/LOGTCPSocketAppender.h"
#include "log4vrk/platform/VRKConfigurationFactory.h"
#include "tests/support/InternalLog.h"
#include "tests/support/TempDir.h"

using vrktest::TempDir;

namespace {

class DOMConfiguratorTest : public testing::Test {
 protected:
  int configure(const std::string& content) {
    return LOG4VRKConfigurator::initialize(
        dir.write("log.xml", "<log4j:configuration>" + content + "</log4j:configuration>").c_str());
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
  const std::string a = dir.file("a.log");
  EXPECT_EQ(1, LOG4VRKConfigurator::initialize(
                   dir.write("log.xml", R"(<configuration debug="false" configDebug="1" threshold="INFO">
    <appender name="A" class="org.example.FileAppender">
      <param name="File" value=")" + a + R"("/>
      <layout class="org.example.TTCCLayout"/>
      <filter class="LevelRangeFilter"/>
      <errorHandler class="OnlyOnceErrorHandler"/>
      <appender-ref ref="B"/>
    </appender>
    <category name="report.x" additivity="FALSE"><priority value="warn" class="my.Level"/><appender-ref ref="A"/></category>
    <logger name="report.y"><level value="inherited"/><appender-ref ref="A"/><appender-ref ref="missing"/></logger>
    <logger name="report.z" class="my.Logger"/>
    <root><level value="inherited"/><level value="nonsense"/></root>
  </configuration>)")
                       .c_str()));
  EXPECT_EQ(R"(log4vrk:WARN The <configuration> element has been deprecated.
log4vrk:WARN Use the <log4j:configuration> element instead.
log4vrk: debug attributes= "false"
log4vrk:WARN The "configDebug" attribute is deprecated.
log4vrk:WARN Use the "debug" attribute instead.
log4vrk: Threshold ="INFO"
log4vrk: Retrieving an instance of LOGLogger: report.x
log4vrk: Creating new instance of LOGLogger: report.x
log4vrk: Setting [report.x] additivity to [FALSE].
log4vrk: LOGDOMConfigurator::parseChildrenOfLoggerElement : remove all appenders from logger report.x
log4vrk: Level value for report.x is  [warn].
log4vrk: Desired LOGLevel sub-class: [Level]
log4vrk: report.x level set to WARN
log4vrk: LOGDOMConfigurator::findAppenderByName : The appender A doesn't exist in appender bag or is already stale, parse from dom.
log4vrk: Class name: [LOGFileAppender]
log4vrk: Parsing layout of class: "LOGTTCCLayout"
log4vrk: Parsing layout of class: "LOGLevelRangeFilter"
log4vrk:WARN Creating generic error handler
log4vrk:ERROR Requesting attachment of appender named [B] which does not implement LOGAppenderAttachable.
log4vrk: LOGDOMConfigurator::findAppenderByName : Put appender A into the appender bag.
log4vrk: LOGDOMConfigurator::parseChildrenOfLoggerElement : Adding appender named [A] to logger [report.x].
log4vrk: Retrieving an instance of LOGLogger: report.y
log4vrk: Creating new instance of LOGLogger: report.y
log4vrk: Setting [report.y] additivity to [true].
log4vrk: LOGDOMConfigurator::parseChildrenOfLoggerElement : remove all appenders from logger report.y
log4vrk: Level value for report.y is  [inherited].
log4vrk: LOGDOMConfigurator::findAppenderByName : The appender A already exists in appender bag, return it.
log4vrk: LOGDOMConfigurator::parseChildrenOfLoggerElement : Adding appender named [A] to logger [report.y].
log4vrk: LOGDOMConfigurator::findAppenderByName : The appender missing doesn't exist in appender bag or is already stale, parse from dom.
log4vrk:ERROR LOGDOMConfigurator::findAppenderByName : No appender named [missing] could be found.
log4vrk: LOGDOMConfigurator::parseChildrenOfLoggerElement : Appender named [missing] not found.
log4vrk: Desired logger sub-class: [Logger]
log4vrk:ERROR Logger Factory missing from config document; please add and restart
log4vrk: LOGDOMConfigurator::parseChildrenOfLoggerElement : remove all appenders from logger root
log4vrk: Level value for root is  [inherited].
log4vrk:ERROR Root level cannot be inherited. Ignoring directive.
log4vrk: Level value for root is  [nonsense].
log4vrk: root level set to DEBUG
)",
            internalLog.text());
  EXPECT_EQ(nullptr, LOGManager::exists("report.z"));
  LOGManager::getLoggerRepository()->setThreshold(LOGLevel::ALL_OBJ);
}

TEST_F(DOMConfiguratorTest, WritesWhatTheDocumentSays) {
  EXPECT_EQ(
      1,
      configure(fileAppender("app",
                             "<filter class='LevelRangeFilter'><param name='LevelMin' value='INFO'/>"
                             "<param name='LevelMax' value='WARN'/></filter>") +
                fileAppender("disk",
                             "<filter class='StringMatchFilter'><param name='StringToMatch' value='disk'/></filter>"
                             "<filter class='NoSuchFilter'/>") +
                fileAppender("unused") +
                "<logger name='say'><level value='DEBUG'/><appender-ref ref='app'/><appender-ref ref='disk'/></logger>"
                "<logger name='say.quiet' additivity='False'><appender-ref ref='app'/></logger>"));
  LOGLogger* const logger = LOGManager::getLogger("say.it");
  logger->debug("debug about the disk");
  logger->info("info");
  logger->error("error");
  LOGManager::getLogger("say.quiet")->warn("disk, quietly");
  EXPECT_EQ("info\ndisk, quietly\n", dir.read("app.log"));
  EXPECT_EQ("debug about the disk\n", dir.read("disk.log"));
  struct stat status;
  EXPECT_NE(0, ::stat(dir.file("unused.log").c_str(), &status)) << "an appender that nothing refers to is not made";
}

TEST_F(DOMConfiguratorTest, TakesTheParametersOfEachClassAndNoOthers) {
  EXPECT_EQ(
      1,
      configure(
          "<appender name='R' class='RollingFileAppender'><param name='File' value='" + dir.file("r.log") +
          "'/><param name='MaximumFileSize' value='1MB'/><param name='MaxBackupIndex' value='7'/>"
          "<param name='Append' value='no'/><param name='append' value='false'/><param name='Threshold' value='WARN'/>"
          "<layout class='TTCCLayout'><param name='dateformat' value='NULL'/><param name='TIMEZONE' value='UTC'/>"
          "<param name='ThreadPrinting' value='false'/></layout></appender>"
          "<logger name='param'><appender-ref ref='R'/></logger>"));
  auto* const appender = dynamic_cast<LOGRollingFileAppender*>(LOGManager::getLogger("param")->getAppender("R"));
  ASSERT_NE(nullptr, appender);
  EXPECT_EQ(1, appender->getMaximumFileSize());
  EXPECT_EQ(7, appender->getMaxBackupIndex());
  EXPECT_EQ(1, appender->getAppend());
  EXPECT_EQ(nullptr, appender->getThreshold());
  EXPECT_EQ(1, dynamic_cast<LOGTTCCLayout*>(appender->getLayout())->getThreadPrinting());
}

TEST_F(DOMConfiguratorTest, TakesTheParametersOfATCPSocketAppenderInAnyCase) {
  VRKConfigurationFactory::getInstance().setBaseDirectory(dir.file("work").c_str());
  EXPECT_EQ(
      1, configure("<appender name='T' class='org.example.LogTCPSocketAppender'><param name='REMOTEHOST' value='::1'/>"
                   "<param name='port' value='1'/><param name='Secure' value='no'/>"
                   "<param name='locationinfo' value='FALSE'/><param name='ReconnectionDelay' value='5000'/></appender>"
                   "<logger name='tcp'><appender-ref ref='T'/></logger>"));
  auto* const appender = dynamic_cast<LOGTCPSocketAppender*>(LOGManager::getLogger("tcp")->getAppender("T"));
  ASSERT_NE(nullptr, appender);
  EXPECT_EQ("::1", appender->getRemoteHost().toUtf8());
  EXPECT_EQ(1, appender->getPort());
  EXPECT_EQ(1, appender->getSecure()) << "only false is not true";
  EXPECT_EQ(0, appender->getLocationInfo());
  EXPECT_EQ(5000, appender->getReconnectionDelay());
  LOGManager::getLogger("tcp")->removeAllAppenders();
  VRKConfigurationFactory::getInstance().setBaseDirectory(I18NString());
}

TEST_F(DOMConfiguratorTest, ReducesClassNamesAtTheLastDot) {
  const std::pair<const char*, const char*> cases[] = {{"a.b.C", "C"}, {"C", "C"},  {"a.b.", "a.b."},
                                                       {"", ""},       {".C", "C"}, {".", "."}};
  for (const auto& [name, reduced] : cases) EXPECT_EQ(I18NString(reduced), LOGDOMConfigurator::subst(name)) << name;
  for (const char* name : {"LOGFileAppender", "a.b.", "Unknown", ""}) {
    const InternalLog log;
    EXPECT_EQ(1, configure("<appender name='U' class='" + std::string(name) +
                           "'/><logger name='u'><appender-ref ref='U'/></logger>"));
    EXPECT_NE(std::string::npos, log.text().find("log4vrk:WARN Could not find the appropriate class for Appenders\n"))
        << name;
  }
}

TEST_F(DOMConfiguratorTest, AnAppenderThatLeadsToItselfCountsAsMissing) {
  EXPECT_EQ(1, configure("<appender name='Ring' class='FileAppender'><errorHandler class='LOGOnlyOnceErrorHandler'>"
                         "<appender-ref ref='Ring'/></errorHandler></appender><logger name='ring'><appender-ref "
                         "ref='Ring'/></logger>"));
  EXPECT_NE(std::string::npos, internalLog.text().find("No appender named [Ring] could be found."));
  EXPECT_NE(nullptr, LOGManager::getLogger("ring")->getAppender("Ring"));
}

TEST_F(DOMConfiguratorTest, ASecondRunMakesAnewWhatTheFirstHadAttachedAndKeepsItForOneMoreRun) {
  const std::string document = fileAppender("again") + "<logger name='again'><appender-ref ref='again'/></logger>";
  EXPECT_EQ(1, configure(document));
  LOGLogger* const logger = LOGManager::getLogger("again");
  LOGAppenderSkeleton* const first = logger->getAppender("again");
  logger->info("one");
  EXPECT_EQ(1, configure(document));
  logger->info("two");
  EXPECT_TRUE(first->isStale());
  EXPECT_NE(first, logger->getAppender("again"));
  EXPECT_EQ("one\ntwo\n", dir.read("again.log"));
}

TEST_F(DOMConfiguratorTest, GoesOnWithWhatCouldBeConfigured) {
  dir.write("isafile", "");
  struct Case {
    const char* name;
    std::string content;
    const char* line;
  } const cases[] = {
      {"missing directory",
       "<appender name='X' class='FileAppender'><param name='File' value='" + dir.file("none/x.log") + "'/></appender>",
       "LOGFileAppender::setFile -- "},
      {"directory as file",
       "<appender name='X' class='FileAppender'><param name='File' value='" + dir.path() + "'/></appender>",
       "Attempted to append to closed appender named [X]."},
      {"file as directory",
       "<appender name='X' class='FileAppender'><param name='File' value='" + dir.file("isafile/x") + "'/></appender>",
       " directory does not exist"},
      {"no file", "<appender name='X' class='FileAppender'><param name='File' value=''/></appender>",
       "Attempted to append to closed appender named [X]."},
      {"unknown class", "<appender name='X' class='Nothing'/>", "Could not find the appropriate class for Appenders"},
      {"nothing of that name", "", "No appender named [X] could be found."},
  };
  for (const Case& c : cases) {
    const InternalLog log;
    EXPECT_EQ(
        1, configure(
               c.content + fileAppender("ok") +
               "<logger name='bad'><level value='no level'/><appender-ref ref='X'/><appender-ref ref='ok'/></logger>"));
    LOGManager::getLogger("bad")->debug("still here");
    EXPECT_NE(std::string::npos, log.text().find(c.line)) << c.name << "\n" << log.text();
    EXPECT_NE(std::string::npos, dir.read("ok.log").find("still here\n")) << c.name;
    std::remove(dir.file("ok.log").c_str());
  }
}

TEST_F(DOMConfiguratorTest, RefusesWhatIsNoConfigurationAndChangesNothing) {
  EXPECT_EQ(1, configure(fileAppender("kept") + "<logger name='kept'><appender-ref ref='kept'/></logger>"));
  dir.write("outside.txt", "<logger name='smuggled'/>");
  const std::string entity = "<!DOCTYPE x [<!ENTITY e SYSTEM '" + dir.file("outside.txt") + "'>]>";
  std::string laughs = "<!DOCTYPE x [<!ENTITY l0 'ha'>";
  for (int i = 1; i < 12; ++i) {
    laughs += "<!ENTITY l" + std::to_string(i) + " '";
    for (int k = 0; k < 10; ++k) laughs += "&l" + std::to_string(i - 1) + ";";
    laughs += "'>";
  }
  struct Case {
    const char* name;
    std::string document;
    const char* line;
  } const cases[] = {
      {"malformed", "<log4j:configuration><root>", "log4vrk:ERROR Could not parse the document VRKThrowable: "},
      {"empty", "", "log4vrk:ERROR Could not parse the document VRKThrowable: "},
      {"other root", "<log4j:config/>", "log4vrk:ERROR DOM element is - not a <log4j:configuration> element.\n"},
      {"billion laughs", laughs + "]><log4j:configuration>&l11;</log4j:configuration>",
       "log4vrk:ERROR Could not parse the document "},
  };
  for (const Case& c : cases) {
    const InternalLog log;
    EXPECT_EQ(0, LOG4VRKConfigurator::initialize(dir.write("bad.xml", c.document).c_str())) << c.name;
    EXPECT_NE(std::string::npos, log.text().find(c.line)) << c.name << "\n" << log.text();
  }
  for (const std::string& path : {dir.file("missing.xml"), dir.path(), std::string("http://127.0.0.1:1/log.xml")}) {
    const InternalLog log;
    EXPECT_EQ(0, LOG4VRKConfigurator::initialize(path.c_str()));
    EXPECT_NE(std::string::npos, log.text().find(": " + path)) << log.text();
  }
  // The entity's text is not read, the rest is configured.
  EXPECT_EQ(
      1, LOG4VRKConfigurator::initialize(
             dir.write("entity.xml", entity + "<log4j:configuration>&e;<logger name='honest'/></log4j:configuration>")
                 .c_str()));
  EXPECT_NE(nullptr, LOGManager::exists("honest"));
  EXPECT_EQ(nullptr, LOGManager::exists("smuggled"));
  LOGManager::getLogger("kept")->info("still here");
  EXPECT_EQ("still here\n", dir.read("kept.log"));
}

TEST_F(DOMConfiguratorTest, ConfiguresFromAnElementAndDoesNotWatch) {
  dir.write("log.xml",
            "<log4j:configuration><logger name='element'><level value='FATAL'/></logger></log4j:configuration>");
  VRKIDOM_Parser parser;
  EXPECT_EQ(1, LOGDOMConfigurator::configure(parser.parse(dir.file("log.xml").c_str()).getDocumentElement()));
  EXPECT_EQ(50000, LOGManager::exists("element")->getLevel()->toInt());
  LOGDOMConfigurator::configureAndWatch(
      dir.write("other.xml", "<log4j:configuration><logger name='watched'/></log4j:configuration>").c_str(), 1);
  EXPECT_EQ(nullptr, LOGManager::exists("watched"));
}

TEST_F(DOMConfiguratorTest, ALockThatCannotBeTakenCostsTheElementAndNoMore) {
  LOGManager::init();
  // The first lock is that of the run itself, the second that of the element, the third that of the name table.
  for (const auto& [skip, line] :
       {std::pair{1, "LOGDOMConfigurator::parseLogger -- unable to lock mutex VRKSystemError: "},
        std::pair{2, "LOGHierarchy::getLogger -- unable to lock mutex VRKSystemError: "}}) {
    const InternalLog log;
    VRKFault::arm(VRKFault::LOCK, 1, skip);
    EXPECT_EQ(1, configure("<logger name='locked'/><root/>"));
    VRKFault::disarm();
    EXPECT_NE(std::string::npos, log.text().find(line)) << log.text();
    EXPECT_NE(std::string::npos, log.text().find("remove all appenders from logger root")) << log.text();
  }
  VRKFault::arm(VRKFault::LOCK);
  EXPECT_EQ(0, configure("<logger name='unlocked'/>"));
  VRKFault::disarm();
  EXPECT_EQ(nullptr, LOGManager::exists("unlocked"));
}

}  // namespace
