#include <set>

#include "log4vrk/appenders/LOGErrorHandler.h"
#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/layouts/LOGLayout.h"
#include "log4vrk/layouts/LOGPatternLayout.h"
#include "log4vrk/net/LOGSyslogAppender.h"
#include "log4vrk/net/LOGSyslogQuietWriter.h"
#include "log4vrk/net/LOGSyslogWriter.h"
#include "tests/net/UdpReceiver.h"
#include "tests/support/Doubles.h"
#include "tests/support/TempDir.h"

using namespace vrktest;

namespace {

constexpr const char* FAILED = "log4vrk:ERROR LOGSyslogWriter::write --- Could not send data to the localhost";

// A loopback address of this test process alone, so that no other test's daemon hears it.
std::string ownAddress() {
  const int id = static_cast<int>(::getpid());
  return "127." + std::to_string(1 + id / 64516 % 254) + "." + std::to_string(id / 254 % 254) + "." +
         std::to_string(1 + id % 254);
}

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

const std::pair<const char*, int> FACILITIES[] = {
    {"kern", 0},      {"user", 8},     {"mail", 16},    {"daemon", 24},  {"auth", 32},
    {"syslog", 40},   {"lpr", 48},     {"news", 56},    {"uucp", 64},    {"cron", 72},
    {"authpriv", 80}, {"ftp", 88},     {"local0", 128}, {"local1", 136}, {"local2", 144},
    {"local3", 152},  {"local4", 160}, {"local5", 168}, {"local6", 176}, {"local7", 184},
};

TEST_F(SyslogAppenderTest, KnowsFacilitiesByNameInAnyCaseAndByCode) {
  EXPECT_EQ("user", appender.getFacility());
  for (const auto& [name, code] : FACILITIES) {
    std::string capitals = name;
    for (char& c : capitals) c = static_cast<char>(c >= 'a' ? c - 'a' + 'A' : c);
    for (const std::string& spelling : {std::string(name), capitals}) {
      EXPECT_EQ(code, LOGSyslogAppender::getFacility(spelling.c_str()));
      appender.setFacility(spelling.c_str());
      EXPECT_EQ(name, appender.getFacility());
    }
    EXPECT_EQ(name, LOGSyslogAppender::getFacilityString(code));
  }
  appender.setFacility("");
  EXPECT_EQ("local7", appender.getFacility());
  appender.setFacility("local8");
  EXPECT_EQ("user", appender.getFacility());
  EXPECT_EQ(-1, LOGSyslogAppender::getFacility("local8"));
  for (const int code : {-1, 1, 96, 192}) EXPECT_EQ("", LOGSyslogAppender::getFacilityString(code));
}

TEST_F(SyslogDatagramTest, SendsTheFacilityAndTheTextWhateverTheLevel) {
  const struct {
    const char* facility;
    int printing;
    LOGLevel* level;
    const char* text;
    std::string expected;
  } cases[] = {
      {"", 0, LOGLevel::INFO_OBJ, "hello", "<8>hello"},
      {"local0", 1, LOGLevel::FATAL_OBJ, "hello", "<128>local0:hello"},
      {"LOCAL3", 1, LOGLevel::DEBUG_OBJ, "", "<152>local3:"},
      {"local3", 0, LOGLevel::DEBUG_OBJ, "", "<152>"},
      {"none such", 1, LOGLevel::ERROR_OBJ, "x", "<8>user:x"},
      {"kern", 2, LOGLevel::ERROR_OBJ, "only 1 prints", "<0>only 1 prints"},
      // As many bytes as characters: each two-byte letter costs one at the end, and a character may be cut in two.
      {"kern", 0, LOGLevel::ERROR_OBJ, "\u00e4\u00f6 abc", "<0>\u00e4\u00f6 a"},
      {"kern", 0, LOGLevel::ERROR_OBJ, "\u00e4\u00f6", "<0>\u00e4"},
      {"kern", 0, LOGLevel::ERROR_OBJ, "\u20ac", "<0>\xe2"},
      {"kern", 0, LOGLevel::ERROR_OBJ, "a\nb\tc\x01", "<0>a\nb\tc\x01"},
  };
  for (const auto& c : cases) {
    appender.setFacility(c.facility);
    appender.setFacilityPrinting(c.printing);
    append(c.text, c.level);
    EXPECT_EQ(c.expected, receiver.next());
  }
  LOGLoggingEvent failed = event("failed");
  failed.setThrowableStrRep("why\nwhere");
  appender.doAppend(&failed);
  EXPECT_EQ("<0>failed", receiver.next());
  EXPECT_EQ("<0>    why\nwhere", receiver.next());
  EXPECT_EQ("", log.text());
}

TEST_F(SyslogDatagramTest, AForkedChildSendsThroughWhatItInherited) {
  append("parent");
  EXPECT_EQ("<8>parent", receiver.next());
  EXPECT_EQ(0, statusInChild([&] { append("child"); }));
  EXPECT_EQ("<8>child", receiver.next());
  append("parent again");
  EXPECT_EQ("<8>parent again", receiver.next());
}

TEST_F(SyslogDatagramTest, NobodyListeningCostsNothingAndTheNextListenerHearsAtOnce) {
  receiver.close();
  const Deadline deadline(60);
  for (int i = 0; i < 99; ++i) append("into the void");
  UdpReceiver later(address, 514);
  ASSERT_TRUE(later.isBound());
  append("somebody");
  EXPECT_EQ("<8>somebody", later.next());
  EXPECT_EQ("", log.text());
}

TEST_F(SyslogDatagramTest, WhatTheSystemRefusesIsOneLineEach) {
  append(I18NString(std::u16string(65504, u'x')));
  EXPECT_EQ(65507u, receiver.next().size());
  for (int i = 1; i <= 3; ++i) {
    append(I18NString(std::u16string(65505, u'x')));
    EXPECT_EQ(std::vector<std::string>(static_cast<std::size_t>(i), FAILED), log.lines());
  }
  append("fits");
  EXPECT_EQ("<8>fits", receiver.next());
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

TEST_F(SyslogDatagramTest, ThreadsLogWhileHostAndFacilityChange) {
  std::set<std::string> expected, received;
  std::vector<std::thread> threads;
  for (const char letter : {'a', 'b'}) {
    for (int i = 0; i < 100; ++i) expected.insert(letter + std::to_string(i));
    threads.emplace_back([this, letter] {
      for (int i = 0; i < 100; ++i) append((letter + std::to_string(i)).c_str());
    });
  }
  for (int i = 0; i < 50; ++i) {
    appender.setSyslogHost(address.c_str());
    appender.setFacility(i % 2 == 0 ? "kern" : "user");
    appender.activateOptions();
  }
  for (std::thread& thread : threads) thread.join();
  while (!receiver.isEmpty()) received.insert(receiver.last().substr(3));
  EXPECT_EQ(expected, received);
}

TEST_F(SyslogDatagramTest, ADocumentNamesHostAndFacility) {
  const TempDir dir;
  dir.write("log.xml", "<log4j:configuration><appender name='s' class='SyslogAppender'><param name='Host' value='" +
                           address + "'/><param name='Facility' value='LOCAL5'/><param name='facility' value='mail'/>" +
                           "<layout class='PatternLayout'><param name='ConversionPattern' value='%p %m'/></layout>" +
                           "</appender><root><appender-ref ref='s'/></root></log4j:configuration>");
  const long before = openDescriptors();
  {
    Tree configured;
    LOGDOMConfigurator configurator;
    for (int run = 0; run < 3; ++run) {
      configurator.doConfigure(dir.file("log.xml").c_str(), &configured);
      configured.getLogger("shop")->warn("sold out");
      EXPECT_EQ("<168>WARN sold out", receiver.next());
    }
  }
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(SyslogAppenderTest, HasOneSocketFromTheFirstActivationUntilItIsClosed) {
  const long before = openDescriptors();
  LOGAppenderSkeleton& base = appender;
  EXPECT_TRUE(base.requiresLayout());
  for (int i = 0; i < 3; ++i) appender.activateOptions();
  EXPECT_EQ(before + 1, openDescriptors());
  for (int i = 0; i < 3; ++i) appender.setSyslogHost("127.0.0.1");
  EXPECT_EQ(before + 1, openDescriptors());
  for (int i = 0; i < 2; ++i) appender.close();
  appender.activateOptions();
  EXPECT_EQ(before, openDescriptors());
  append("late");
  EXPECT_EQ(Texts{"log4vrk:ERROR Attempted to append to closed appender named [LOGSyslogAppender]."}, log.lines());
}

TEST_F(SyslogAppenderTest, SaysWhatIsMissingForEveryEvent) {
  append("no host");
  append("no host");
  const std::string noHost = "log4vrk:ERROR No syslog host is set for LOGSyslogAppedender named [LOGSyslogAppender].";
  EXPECT_EQ((Texts{noHost, noHost}), log.lines());
  LOGSyslogAppender plain;
  plain.setSyslogHost("127.0.0.1");
  LOGLoggingEvent made = event("no layout");
  plain.doAppend(&made);
  EXPECT_EQ((Texts{noHost, noHost, "log4vrk: LOGSyslogAppender::append --- m_layout is NULL. append canceled"}),
            log.lines());
}

TEST_F(SyslogAppenderTest, AHostOrSocketThatCannotBeHadNeverStopsALogCall) {
  const Deadline deadline(60);
  appender.setSyslogHost("no host has this name");
  EXPECT_EQ(Texts{"log4vrk:ERROR LOGSyslogWriter::init --- Error in converting address."}, log.lines());
  append("one");
  append("two");
  EXPECT_EQ(2, log.count(FAILED));
  VRKFault::arm(VRKFault::SOCKET_OPEN);
  appender.setSyslogHost("127.0.0.1");
  EXPECT_EQ(3u, log.lines().size());  // this failure has no line of its own
  append("three");
  EXPECT_EQ(3, log.count(FAILED));
  VRKFault::arm(VRKFault::SOCKET_MODE);
  appender.setSyslogHost("127.0.0.1");
  EXPECT_EQ(1, log.count("log4vrk:ERROR LOGSyslogWriter::init --- fcntl function failed"));
  LOGSyslogWriter writer("");
  writer.write("never initialised");
  EXPECT_EQ("log4vrk:ERROR LOGSyslogWriter::write --- Could not send data to ", log.lines().back());
}

TEST_F(SyslogAppenderTest, ReportsALockThatCannotBeTakenAndWhatALayoutRaises) {
  LOGLoggingEvent made = event("x");
  appender.activateOptions();
  const auto lastLine = [&] { return log.lines().back(); };
  VRKFault::arm(VRKFault::LOCK);
  EXPECT_NO_THROW(appender.append(&made));
  EXPECT_EQ(0u, lastLine().find("log4vrk:ERROR LOGSyslogAppender::append --- enable to lock mutex."));
  VRKFault::arm(VRKFault::LOCK);
  EXPECT_NO_THROW(appender.close());
  EXPECT_EQ(0u, lastLine().find("log4vrk:ERROR LOGSyslogAppender::close ---- Unable to lock mutex."));

  struct Raising : LOGLayout {
    I18NString& format(LOGLoggingEvent*) override {
      if (library) VRKAssertError::raise("of the library", VRK_HERE);
      throw std::runtime_error("of the program");
    }
    bool library = true;
  } raising;
  appender.setLayout(&raising);
  EXPECT_NO_THROW(appender.append(&made));
  EXPECT_EQ(0u, lastLine().find("log4vrk:ERROR LOGSyslogAppender::append --- An unknown exception occurred."));
  raising.library = false;
  EXPECT_THROW(appender.append(&made), std::runtime_error);
  EXPECT_EQ("log4vrk:ERROR LOGSyslogAppender::append --- An unknown exception occurred.", lastLine());
  EXPECT_THROW(appender.append(nullptr), VRKAssertError);
}

TEST(SyslogQuietWriterTest, HandsWhatItsWriterRaisesToTheErrorHandler) {
  struct Writer : LOGSyslogWriter {
    Writer() : LOGSyslogWriter("127.0.0.1") {}
    void write(const I18NString&) override { throw std::runtime_error("broken"); }
  } writer;
  struct Handler : LOGErrorHandler {
    void error(const I18NString& message) override {
      text = message;
      throw std::runtime_error("worse");
    }
    I18NString text;
  } handler;
  LOGSyslogQuietWriter(&writer, 8, nullptr).write("x");
  LOGSyslogQuietWriter(&writer, 8, &handler).write("x");
  EXPECT_EQ("broken", handler.text);
}

}  // namespace
