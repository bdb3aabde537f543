#include "log4vrk/net/LOGSyslogWriter.h"
#include "tests/net/UdpReceiver.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

constexpr const char* FAILED = "log4vrk:ERROR LOGSyslogWriter::write --- Could not send data to the localhost";

class SyslogAppenderTest : public testing::Test {
 protected:
  SyslogAppenderTest() : layout("%m") { appender.setLayout(&layout); }
  ~SyslogAppenderTest() override { VRKFault::disarm(); }

  LOGLoggingEvent event(const I18NString& text, LOGLevel* level = LOGLevel::INFO_OBJ) {
    LOGObject message(text);
    return LOGLoggingEvent("test", shop, level, &message);
  }
  void append(const I18NString& text, LOGLevel* level = LOGLevel::INFO_OBJ) {
    LOGLoggingEvent made = event(text, level);
    appender.doAppend(&made);
  }

  Tree tree;
  LOGLogger* const shop = tree.getLogger("shop");  // before the internal log is looked at, which names new loggers
  LOGPatternLayout layout;
  LOGSyslogAppender appender;
  InternalLog log;
};

// With a receiver on port 514.
class SyslogDatagramTest : public SyslogAppenderTest {
 protected:
  void SetUp() override {
    if (!receiver.isBound()) GTEST_SKIP() << "port 514 needs root";
    appender.setSyslogHost(address.c_str());
  }

  const std::string address = ownAddress();
  UdpReceiver receiver{address, 514};
};

TEST_F(SyslogAppenderTest, KnowsFacilitiesByNameInAnyCaseAndByCode) {
  const char* const NAMES[] = {"kern",   "user",   "mail",     "daemon", "auth",   "syslog", "lpr",    "news",
                               "uucp",   "cron",   "authpriv", "ftp",    "",       "",       "",       "",
                               "local0", "local1", "local2",   "local3", "local4", "local5", "local6", "local7"};
  EXPECT_EQ("user", appender.getFacility());
  for (int code = 0; code < 24 * 8; code += 8) {
    const I18NString name = NAMES[code / 8];
    EXPECT_EQ(name, LOGSyslogAppender::getFacilityString(code));
    EXPECT_EQ(name.isEmpty() ? -1 : code, LOGSyslogAppender::getFacility(name));
  }
  for (const int code : {-1, 1, 192}) EXPECT_EQ("", LOGSyslogAppender::getFacilityString(code));
  EXPECT_EQ(-1, LOGSyslogAppender::getFacility("local8"));
  EXPECT_EQ(16, LOGSyslogAppender::getFacility("MAIL"));
}

TEST_F(SyslogDatagramTest, SendsTheFacilityAndTheTextWhateverTheLevel) {
  const std::tuple<const char*, int, LOGLevel*, const char*, const char*> CASES[] = {
      {"", 0, LOGLevel::INFO_OBJ, "hello", "<8>hello"},
      {"local0", 1, LOGLevel::FATAL_OBJ, "hello", "<128>local0:hello"},
      {"LOCAL3", 1, LOGLevel::DEBUG_OBJ, "", "<152>local3:"},
      {"", 0, LOGLevel::DEBUG_OBJ, "", "<152>"},
      {"none such", 1, LOGLevel::ERROR_OBJ, "x", "<8>user:x"},
      {"kern", 2, LOGLevel::ERROR_OBJ, "only 1 prints", "<0>only 1 prints"},
      // As many bytes as characters: each two-byte letter costs one at the end, and a character may be cut in two.
      {"kern", 0, LOGLevel::ERROR_OBJ, "\u00e4\u00f6 abc", "<0>\u00e4\u00f6 a"},
      {"kern", 0, LOGLevel::ERROR_OBJ, "\u20ac", "<0>\xe2"},
      {"kern", 0, LOGLevel::ERROR_OBJ, "a\nb\tc\x01", "<0>a\nb\tc\x01"},
  };
  for (const auto& [facility, printing, level, text, expected] : CASES) {
    appender.setFacility(facility);
    appender.setFacilityPrinting(printing);
    append(text, level);
    EXPECT_EQ(expected, receiver.next());
  }
  LOGLoggingEvent failed = event("failed");
  failed.setThrowableStrRep("why\nwhere");
  appender.doAppend(&failed);
  EXPECT_EQ("<0>failed", receiver.next());
  EXPECT_EQ("<0>    why\nwhere", receiver.next());
  EXPECT_EQ("", log.text());
}

TEST_F(SyslogDatagramTest, WhatTheSystemRefusesIsOneLineEach) {
  append(I18NString(std::u16string(65504, u'x')));
  EXPECT_EQ(65507u, receiver.next().size());
  for (int i = 1; i <= 3; ++i) {
    append(I18NString(std::u16string(65505, u'x')));
    EXPECT_EQ(Texts(static_cast<std::size_t>(i), FAILED), log.lines());
  }
  append("fits");
  EXPECT_EQ("<8>fits", receiver.next());
}

// The system tells the sender, on the next datagram, that nobody has taken the one before.
TEST_F(SyslogDatagramTest, ADaemonThatGoesAwayCostsNothingButWhatIsSentMeanwhile) {
  receiver.close();
  for (int i = 0; i < 99; ++i) append("lost");
  UdpReceiver again(address, 514);
  append("the first after its return");
  EXPECT_EQ("<8>the first after its return", again.next());
  EXPECT_EQ("", log.text());
}

TEST_F(SyslogDatagramTest, TheHostOfOneIsTheHostOfAllThatAreActivatedLater) {
  LOGSyslogAppender other;
  other.setLayout(&layout);
  EXPECT_EQ(address.c_str(), other.getSyslogHost());
  other.activateOptions();
  LOGLoggingEvent made = event("other");
  other.doAppend(&made);
  EXPECT_EQ("<8>other", receiver.next());
  other.setSyslogHost("");
  EXPECT_EQ("localhost", appender.getSyslogHost());
  append("still here");
  EXPECT_EQ("<8>still here", receiver.next());
}

TEST_F(SyslogAppenderTest, HasOneSocketUntilItIsClosedAndSaysWhatIsMissingForEveryEvent) {
  const long before = openDescriptors();
  for (int i = 0; i < 2; ++i) append("no host");
  for (int i = 0; i < 3; ++i) appender.activateOptions();
  for (int i = 0; i < 3; ++i) appender.setSyslogHost("127.0.0.1");
  EXPECT_EQ(before + 1, openDescriptors());
  for (int i = 0; i < 2; ++i) appender.close();
  appender.activateOptions();
  append("late");
  EXPECT_EQ(before, openDescriptors());
  LOGSyslogAppender plain;
  plain.setSyslogHost("127.0.0.1");
  LOGLoggingEvent made = event("no layout");
  plain.doAppend(&made);
  const std::string noHost = "log4vrk:ERROR No syslog host is set for LOGSyslogAppedender named [LOGSyslogAppender].";
  EXPECT_EQ((Texts{noHost, noHost, "log4vrk:ERROR Attempted to append to closed appender named [LOGSyslogAppender].",
                   "log4vrk: LOGSyslogAppender::append --- m_layout is NULL. append canceled"}),
            log.lines());
}

TEST_F(SyslogAppenderTest, AHostOrSocketThatCannotBeHadNeverStopsALogCall) {
  const Deadline deadline(60);
  appender.setSyslogHost("no host has this name");
  append("one");
  VRKFault::arm(VRKFault::SOCKET_OPEN);
  appender.setSyslogHost("127.0.0.1");  // this failure has no line of its own
  append("two");
  VRKFault::arm(VRKFault::SOCKET_MODE);
  appender.setSyslogHost("127.0.0.1");
  LOGSyslogWriter writer("");
  writer.write("never initialised");
  EXPECT_EQ((Texts{"log4vrk:ERROR LOGSyslogWriter::init --- Error in converting address.", FAILED, FAILED,
                   "log4vrk:ERROR LOGSyslogWriter::init --- fcntl function failed",
                   "log4vrk:ERROR LOGSyslogWriter::write --- Could not send data to "}),
            log.lines());
}

}  // namespace
