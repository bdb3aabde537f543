#include "tests/appenders/AppenderFixture.h"

using vrktest::RecordingAppender;
using vrktest::Texts;

namespace {

struct FallbackAppenderTest : AppenderFixture {
  FallbackAppenderTest() { m_fallback.setName("safe"); }

  Texts linesOf(const std::string& name) const { return vrktest::linesOf(m_dir.file(name)); }

  const vrktest::Deadline m_deadline{110};
  LOGPatternLayout m_pattern{"%m%n"};
  RecordingAppender m_last{"last"};
  LOGFallbackAppender m_fallback;
};

struct Way : FallbackAppenderTest, testing::WithParamInterface<vrktest::Way> {
  LOGLayout& layout() { return GetParam() == vrktest::Way::FAST ? m_pattern : m_layout; }
};

}  // namespace

TEST_P(Way, AFullDiskTakesNoEventAndIsTriedAgainAfterTheDelay) {
  LOGFileAppender full(&layout(), path("full"), 1), other(&layout(), path("other"), 1);
  full.setName("full");
  other.setName("other");
  m_fallback.addAppender(&full);
  m_fallback.addAppender(&other);
  vrktest::Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  logger->addAppender(&m_fallback);
  long number = 0;
  const auto logSome = [&](int count) {
    for (int i = 0; i < count; ++i) vrktest::logNumber(logger, GetParam(), 0, ++number);
  };
  logSome(2);
  VRKFault::arm(VRKFault::FILE_WRITE, 1);
  logSome(2);  // the second is not offered to the first appender
  m_fallback.setRetryDelay(0);
  logSome(1);
  EXPECT_EQ(linesOf("full"), Texts({"0 1 end", "0 2 end", "0 5 end"}));
  EXPECT_EQ(linesOf("other"), Texts({"0 3 end", "0 4 end"}));
  EXPECT_EQ(m_log.count("LOGFallbackAppender"), 2);
  EXPECT_TRUE(m_log.contains("[safe] -- [full] does not take events, the next appender is asked"));
  EXPECT_TRUE(m_log.contains("[safe] -- [full] takes events again"));
  VRKFault::arm(VRKFault::FILE_WRITE, 4);
  logSome(2);
  EXPECT_EQ(m_log.count("[safe] -- no appender takes events: they are lost"), 1);
  m_fallback.setRetryDelay(1000000);
  logSome(1);
  EXPECT_EQ(linesOf("full").back(), "0 8 end") << "none else takes it, so those that are passed over are asked";
  logger->removeAllAppenders();
}
INSTANTIATE_TEST_SUITE_P(FallbackAppenderTest, Way, testing::ValuesIn(vrktest::WAYS));

// Each of these comes first, and the next appender must get the event, once.
TEST_F(FallbackAppenderTest, KnowsOfEachKindOfAppenderWhetherItTookTheEvent) {
  LOGLevelRangeFilter deniesAll;
  deniesAll.setLevelMin(LOGLevel::FATAL_OBJ);
  LOGFileAppender noDirectory(&m_pattern, path("missing/log"), 1), noLayout, good(&m_pattern, path("good"), 1);
  noLayout.setFile(path("no-layout"), 1, 0, 0);
  LOGRollingFileAppender closed(&m_pattern, path("closed"), 1);
  closed.close();
  LOGTimeRollingFileAppender neverOpened;
  LOGConsoleAppender bareConsole;
  LOGColorConsoleAppender bareColors;
  LOGAsyncAppender closedQueue, emptyQueue, queue;
  closedQueue.activateOptions();
  closedQueue.close();
  emptyQueue.setBufferSize(0);
  LOGSyslogAppender bareSyslog;
  LOGJournalAppender noJournal;
  noJournal.setSocket(path("no-socket"));
  LOGTCPSocketAppender noServer;
  LOGFallbackAppender nobody, nested, fallsBack;
  nobody.setName("nobody");
  nested.addAppender(&nobody);
  RecordingAppender raises, raisesUnknown, refusesToStart, takes;
  raises.onAppend = [](const std::string&) { throw VRKOutOfMemoryError(VRK_HERE); };
  raisesUnknown.onAppend = [](const std::string&) { throw 1; };
  refusesToStart.onActivate = [] { throw std::runtime_error("no"); };
  fallsBack.addAppender(&nobody);
  fallsBack.addAppender(&takes);
  LOGFileAppender denies(&m_pattern, path("denies"), 1);
  denies.addFilter(&deniesAll);
  const std::tuple<const char*, LOGAppenderSkeleton*, bool> CASES[] = {
      {"a file without a directory", &noDirectory, false},
      {"a file without a layout", &noLayout, false},
      {"a closed file", &closed, false},
      {"a file without a name", &neverOpened, false},
      {"a console without a layout", &bareConsole, false},
      {"a coloured one", &bareColors, false},
      {"a closed queue", &closedQueue, false},
      {"a queue without room", &emptyQueue, false},
      {"a syslog appender without a layout", &bareSyslog, false},
      {"a journal that is not there", &noJournal, false},
      {"a log server that nobody has named", &noServer, false},
      {"one to fall back with nobody behind it", &nested, false},
      {"an appender that raises an error of the library's", &raises, false},
      {"any other", &raisesUnknown, false},
      {"an appender that cannot be activated", &refusesToStart, false},
      {"a good file", &good, true},
      {"a queue", &queue, true},
      {"an appender of the program's", &takes, true},
      {"a filter that denies", &denies, true},
      {"one that has fallen back itself", &fallsBack, true},
  };
  vrktest::Tree tree;
  for (const auto& [what, first, isTaken] : CASES) {
    for (const bool asText : {true, false}) {
      m_last.texts.clear();
      LOGFallbackAppender fallback;
      fallback.addAppender(first);
      fallback.addAppender(&m_last);
      tree.getRootLogger()->addAppender(&fallback);
      vrktest::logNumber(tree.getRootLogger(), asText ? vrktest::Way::FAST : vrktest::Way::ORDINARY, 0, 1);
      EXPECT_EQ(m_last.texts, isTaken ? Texts() : Texts{"0 1 end"}) << what << (asText ? ", a text" : ", an object");
      tree.getRootLogger()->removeAppender(&fallback);
    }
  }
  queue.close();  // while there is the logger of what it holds
}

TEST_F(FallbackAppenderTest, EachEventIsInOnePlaceWhileAppendersFailComeAndGo) {
  constexpr int THREADS = 4;
  constexpr long EACH = 5000;
  struct Flaky : RecordingAppender {
    void append(LOGLoggingEvent* event) override {
      if (++calls % 7 < 3) throw VRKOutOfMemoryError(VRK_HERE);
      RecordingAppender::append(event);
    }
    long calls = 0;
  } flaky;
  LOGFileAppender file(&m_pattern, path("file"), 1);
  file.setName("file");
  m_fallback.setRetryDelay(0);
  m_fallback.addAppender(&flaky);
  m_fallback.addAppender(&file);
  m_fallback.addAppender(&m_last);
  vrktest::Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  logger->addAppender(&m_fallback);
  {
    const vrktest::Meanwhile changes({[&] {
      m_fallback.removeAppender(&file);
      std::this_thread::yield();
      m_fallback.addAppender(&file);
      m_fallback.removeAppender("last");
      m_fallback.addAppender(&m_last);
    }});
    vrktest::onThreads(THREADS, [&](int thread) {
      for (long n = 1; n <= EACH; ++n) {
        vrktest::logNumber(logger, n % 2 == 0 ? vrktest::Way::FAST : vrktest::Way::ORDINARY, thread, n);
      }
    });
  }
  logger->removeAllAppenders();
  std::vector<std::string> lines = linesOf("file");
  for (const RecordingAppender* each : {static_cast<RecordingAppender*>(&flaky), &m_last}) {
    EXPECT_GT(each->texts.size(), 0U);
    lines.insert(lines.end(), each->texts.begin(), each->texts.end());
  }
  std::stable_sort(lines.begin(), lines.end(), [](const std::string& a, const std::string& b) {
    return std::stol(a.substr(a.find(' '))) < std::stol(b.substr(b.find(' ')));
  });
  vrktest::expectEachOnceInOrder(lines, THREADS, EACH);
}

TEST_F(FallbackAppenderTest, IsNoRingDeliversOnceMoreWhatTheQueueHasAndStaysClosed) {
  LOGAsyncAppender queue;
  queue.addAppender(&m_fallback);
  m_fallback.addAppender(&m_fallback);
  m_fallback.addAppender(&queue);
  EXPECT_FALSE(m_fallback.isAttached(&queue)) << "the queue leads here";
  LOGFallbackAppender outer;
  outer.addAppender(&queue);
  m_fallback.addAppender(&outer);
  EXPECT_FALSE(m_fallback.isAttached(&outer));
  m_fallback.addAppender(&m_last);
  EXPECT_EQ(m_fallback.getAppender("last"), &m_last);
  log(outer, "one", "two");
  queue.close();
  EXPECT_EQ(m_last.texts, Texts({"one", "two"}));
  m_fallback.close();
  log(m_fallback, "three");
  EXPECT_EQ(m_last.closings, 0) << "it is the program's";
  EXPECT_EQ(m_log.count("Attempted to append to closed appender named [safe]"), 1);
  m_fallback.removeAllAppenders();
  EXPECT_EQ(m_last.closings, 1);
  EXPECT_EQ(m_last.texts.size(), 2U);
}

// A disk that is really full, as a document says.
TEST_F(FallbackAppenderTest, IsMadeByADocument) {
  const std::string document =
      m_dir.write("log.xml",
                  "<log4j:configuration>"
                  "<appender name='full' class='FileAppender'><param name='File' value='/dev/full'/>"
                  "<layout class='SimpleLayout'/></appender>"
                  "<appender name='other' class='FileAppender'><param name='File' value='" +
                      m_dir.file("other") +
                      "'/>"
                      "<layout class='SimpleLayout'/></appender>"
                      "<appender name='safe' class='FallbackAppender'><param name='RetryDelay' value='50'/>"
                      "<appender-ref ref='full'/><appender-ref ref='other'/></appender>"
                      "<root><appender-ref ref='safe'/></root></log4j:configuration>");
  ASSERT_EQ(LOG4VRKConfigurator::initialize(document.c_str()), 1);
  auto* const made = dynamic_cast<LOGFallbackAppender*>(LOGManager::getRootLogger()->getAppender("safe"));
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->getRetryDelay(), 50);
  for (int i = 1; i <= 3; ++i) LOG4VRK_WARN(LOGManager::getRootLogger(), i);
  LOG4VRKConfigurator::shutdown();
  EXPECT_EQ(linesOf("other"), Texts({"1", "2", "3"}));
}
