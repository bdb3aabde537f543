#include "log4vrk/core/internal/LOGAppenderInternals.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

class AsyncAppenderTest : public testing::Test {
 protected:
  AsyncAppenderTest() {
    appender.setName("async");
    appender.addAppender(&sink);
    logger->addAppender(&appender);
  }
  ~AsyncAppenderTest() override {
    appender.close();
    logger->removeAppender(&appender);
  }

  const Deadline deadline{100};
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  RecordingAppender sink{"sink"};
  LOGAsyncAppender appender;
};

TEST(LOGBoundedFIFO, IsFullAtExactlyItsSizeAndKeepsTheOrder) {
  const InternalLog log;
  LOGLoggingEvent events[600];
  LOGBoundedFIFO queue(2);
  EXPECT_EQ(nullptr, queue.get());
  EXPECT_TRUE(queue.put(&events[0]) && queue.wasEmpty() && queue.put(&events[1]) && queue.isFull());
  EXPECT_FALSE(queue.put(&events[2]));
  EXPECT_EQ(1, log.count("log4vrk:ERROR LOGBoundedFIFO:put --- The list of LOGEventLogger is full."));
  queue.resize(1);
  EXPECT_FALSE(queue.isFull());
  EXPECT_TRUE(queue.put(&events[2])) << "after shrinking it grows until it has been drained";
  for (int i = 0; i < 3; ++i) EXPECT_EQ(&events[i], queue.get());
  queue.resize(4);
  for (int i = 0; i < 4; ++i) queue.put(&events[i]);
  EXPECT_EQ(&events[0], queue.get());
  EXPECT_TRUE(queue.wasFull());
  LOGBoundedFIFO never(-1), always(0);
  EXPECT_EQ(2, log.count("LOGBoundedFIFO::LOGBoundedFIFO --- The maxSize argument is not a positive integer."));
  EXPECT_FALSE(always.put(&events[0]));
  for (LOGLoggingEvent& event : events) EXPECT_TRUE(never.put(&event));
  for (LOGLoggingEvent& event : events) EXPECT_EQ(&event, never.get());
}

// A text goes the short way, an object does not.
TEST(AsynchronousAppenders, TreatATextLikeAnObjectInEveryState) {
  const TempDir dir;
  const InternalLog log;
  RecordingAppender sink;
  LOGDenyAllFilter deny;
  LOGAsyncAppender ordinary;
  LOGDurableAsyncAppender durable;
  durable.setDirectory(dir.file("rings").c_str());
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a.b");
  for (LOGAsyncAppender* const queue : {&ordinary, static_cast<LOGAsyncAppender*>(&durable)}) {
    queue->setName("queue");
    queue->addAppender(&sink);
    tree.getLogger("a")->addAppender(queue);
    const struct {
      const char* name;
      std::function<void()> change;
      std::size_t delivered;
    } states[] = {
        {"as it is", [] {}, 1},
        {"a threshold below", [&] { queue->setThreshold(LOGLevel::DEBUG_OBJ); }, 0},
        {"its threshold", [&] { queue->setThreshold(LOGLevel::INFO_OBJ); }, 1},
        {"a threshold above", [&] { queue->setThreshold(LOGLevel::ERROR_OBJ); }, 1},
        {"a filter", [&] { queue->addFilter(&deny); }, 0},
        {"no filter", [&] { queue->clearFilters(); }, 1},
        {"location", [&] { queue->setLocationInfo(1); }, 1},
        {"another parent's", [&] { logger->setAdditivity(0); }, 0},
        {"its own again", [&] { logger->setAdditivity(1), queue->setLocationInfo(0); }, 1},
        {"closed", [&] { queue->close(); }, 0},
    };
    for (const auto& state : states) {
      state.change();
      for (const bool isObject : {false, true}) {
        sink.texts.clear();
        HookMessage object("said");
        if (isObject) logger->info(&object);
        if (!isObject) LOG4VRK_INFO(logger, "said");
        LOGAppenderInternals::of(*queue)->drain(*queue);
        EXPECT_EQ(sink.texts, Texts(state.delivered, "said")) << state.name << (isObject ? ", object" : ", text");
      }
    }
    tree.getLogger("a")->removeAppender(queue);
    logger->setAdditivity(1);
  }
}

TEST_F(AsyncAppenderTest, ContextAndFieldsGoAlongAndNothingOfThemStays) {
  struct Changing : LOGAppenderSkeleton {
    void append(LOGLoggingEvent* event) override {
      EXPECT_TRUE(event->getThrowableStrRep().isEmpty() && event->getLoggerName() == "a" &&
                  event->getLevel() == LOGLevel::INFO_OBJ);
      EXPECT_EQ(event->getThreadName(), I18NString() + VRKThread::currentThreadId());
      texts.push_back(event->getMessage()->toString().toUtf8() + "|" + event->getField("c") + "|" +
                      event->getField("f"));
      event->setRenderedMessage("changed");
      event->setThreadName("changed");
      event->setThrowableStrRep("changed");
      event->setLevel(LOGLevel::FATAL_OBJ);
      event->setLogger(nullptr);
    }
    Texts texts;
  } changing;
  appender.addAppender(&changing);
  Texts expected;
  for (const std::size_t length : {0, 1, 40, 55, 56, 57, 58, 59, 60, 100, 143, 144, 145, 152, 160, 5000, 2}) {
    const std::string text(length, 'x'), field(length, 'f'), number = std::to_string(length);
    LOG4VRK_INFO(logger, text);
    LOG4VRK_CONTEXT("c", length);
    LOG4VRK_INFO_KV(logger, text, "f", field);
    LOG4VRK_INFO(logger, "context only");
    const std::string inContext = "|" + number + "|";
    expected.push_back(text + "||");
    expected.push_back(text + inContext);
    expected.back() += field;
    expected.push_back("context only" + inContext);
  }
  appender.close();
  EXPECT_EQ(expected, changing.texts);
  EXPECT_EQ(0, sink.closings) << "its appenders stay open";
  EXPECT_THROW(appender.getBufferSize(), VRKAssertError);
}

TEST_F(AsyncAppenderTest, WaitsForSpaceAndDropsOnlyWhereThereWillBeNone) {
  const InternalLog log;
  appender.setBufferSize(1);
  EXPECT_EQ(1, appender.getBufferSize());
  std::atomic<bool> stuck{true};
  std::atomic<int> delivered{0};
  sink.onAppend = [&](const std::string&) {
    eventually([&] { return !stuck; });
    ++delivered;
  };
  std::thread thread([&] {
    for (int i = 0; i < 20; ++i) logger->info("event");
  });
  EXPECT_TRUE(eventually([&] { return log.count("log4vrk: Waiting for free space in buffer, ") > 1; }));
  VRKFault::arm(VRKFault::SLEEP, 2);
  EXPECT_TRUE(eventually([&] { return log.contains("log4vrk:WARN AsyncAppender interrupted") || !stuck; }));
  VRKFault::disarm();
  stuck = false;
  thread.join();
  EXPECT_TRUE(eventually([&] { return log.contains("log4vrk: Notifying AsyncAppender about freed space."); }));
  EXPECT_TRUE(eventually([&] { return delivered == 20; }));
  appender.setBufferSize(0);
  logger->info("dropped");
  EXPECT_TRUE(log.contains("LOGBoundedFIFO:put --- The list of LOGEventLogger is full."));
  appender.close();
  EXPECT_EQ(20u, sink.texts.size());
}

TEST_F(AsyncAppenderTest, WithLocationInfoTheCallersThreadAndContextGoAlong) {
  const TempDir dir;
  LOGPatternLayout layout("%t %x %m");
  LOGFileAppender file(&layout, dir.file("log").c_str());
  appender.addAppender(&file);
  appender.setLocationInfo(1);
  LOGNDC::push("request 17");
  logger->info("event");
  LOGNDC::remove();
  appender.close();
  EXPECT_EQ(std::to_string(VRKThread::currentThreadId()) + " request 17 event", dir.read("log"));
}

TEST_F(AsyncAppenderTest, GoesOnAfterAppendersThatRaiseAndAfterThoseThatLog) {
  const InternalLog log;
  std::atomic<int> events{0};
  sink.onAppend = [&](const std::string& text) {
    if (text.rfind("inner", 0) == 0) return;
    logger->info(("inner " + text).c_str());
    if (++events == 2) throw std::runtime_error("foreign");
    if (events == 3) throw VRKThrowable("own", VRK_HERE);
  };
  sink.onActivate = [&] {
    if (events == 4) throw VRKThrowable("from activation", VRK_HERE);
  };
  for (int i = 0; i < 5; ++i) LOG4VRK_INFO(logger, i);
  EXPECT_TRUE(eventually([&] { return log.contains("log4vrk:ERROR VRKThrowable: from activation"); }));
  EXPECT_TRUE(log.contains("LOGAppenderSkeleton::doAppend -- An Exception occured"));
  appender.close();
  EXPECT_EQ(4, events);
}

TEST_F(AsyncAppenderTest, ACloseDeliversTheEventsOfLogCallsThatWaitForSpace) {
  for (int round = 0; round < 10; ++round) {
    const InternalLog log;
    LOGAsyncAppender queue;
    RecordingAppender slow;
    std::atomic<bool> delivering{false}, goOn{false};
    slow.onAppend = [&](const std::string&) {
      delivering = true;
      eventually([&] { return goOn.load(); });
    };
    queue.setBufferSize(2);
    queue.addAppender(&slow);
    LOGLogger* const into = tree.getLogger("into");
    into->setAdditivity(0);
    into->addAppender(&queue);
    into->info("is delivered");
    EXPECT_TRUE(eventually([&] { return delivering.load(); }));
    into->info("is queued");
    into->info("is queued, too");
    std::thread waiting([&] { into->info("waits"); });
    EXPECT_TRUE(eventually([&] { return log.contains("Waiting for free space in buffer, "); }));
    // Of these some come after the closing. Each is refused with a line.
    std::thread later([&] { onThreads(4, [&](int) { into->info("later"); }); });
    std::thread closing([&] { queue.close(); });
    goOn = true;
    for (std::thread* const each : {&closing, &waiting, &later}) each->join();
    EXPECT_EQ(1, std::count(slow.texts.begin(), slow.texts.end(), "waits"));
    const long refused = log.count("closed appender") + log.count("VRK_ASSERT(m_dispatcher);");
    EXPECT_EQ(static_cast<long>(slow.texts.size()) + refused, 8);
    EXPECT_EQ(log.count("is full"), 0);
    into->removeAppender(&queue);
  }
}

TEST_F(AsyncAppenderTest, MayBeClosedFromInsideADeliveryAndIsNeverPartOfARing) {
  LOGAsyncAppender other;
  other.addAppender(&appender);
  appender.addAppender(&appender);
  appender.addAppender(&other);
  EXPECT_FALSE(appender.isAttached(&other) || appender.isAttached(&appender));
  std::atomic<bool> allQueued{false};
  std::atomic<int> delivered{0};
  sink.onAppend = [&](const std::string& text) {
    if (text == "close" && eventually([&] { return allQueued.load(); })) appender.close();
    ++delivered;
  };
  for (const char* text : {"one", "close", "two"}) logger->info(text);
  const long before = threadsOfProcess();
  allQueued = true;
  EXPECT_TRUE(eventually([&] { return delivered == 3; }));
  EXPECT_TRUE(eventually([&] { return threadsOfProcess() == before - 1; })) << "the dispatcher ends by itself";
}

}  // namespace
