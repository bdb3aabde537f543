#include <gmock/gmock.h>

#include "log4vrk/format.h"
#include "log4vrk/testing/LOGCapture.h"
#include "log4vrk/testing/matchers.h"
#include "tests/support/Tests.h"

using namespace LOGMatchers;
using namespace testing;
using namespace vrktest;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

namespace {

using LOGCaptureTest = TreeTest;

constexpr seconds LIMIT{60};

Texts messagesOf(const LOGCapture& logs) {
  Texts texts;
  for (const LOGCapturedEvent& event : logs.events()) texts.push_back(event.message);
  return texts;
}

std::string said(const LOGCapturedEvent& event) { return PrintToString(event); }

}  // namespace

TEST_F(LOGCaptureTest, CaptureHasAllThatIsKnownOfAnEvent) {
  LOGCapture logs(*logger);
  const std::int64_t before = std::time(nullptr);
  LOGNDC::push("request 9");
  {
    LOG4VRK_CONTEXT("order", 17, "till", "hidden by the field");
    LOG4VRK_WARN_KV(logger, "only " << 3 << " left", "till", 4, "paid", true);
  }
  LOGNDC::pop();
  LOGObject object("an object");
  std::thread([&] { logger->debug(&object); }).join();

  const std::vector<LOGCapturedEvent> events = logs.events();
  ASSERT_EQ(events.size(), 2U);
  const LOGCapturedEvent& first = events[0];
  EXPECT_EQ(said(first), "WARN a.b [" + first.thread +
                             "] \"only 3 left\" nested request 9 order=17 paid=true till=4 at " + first.file + ":" +
                             std::to_string(first.line));
  EXPECT_THAT(first, AllOf(HasContext("order", "17"), HasField("till", "4"), Not(HasContext("till", _)),
                           Field(&LOGCapturedEvent::rank, LOGLevel::WARN_RANK),
                           Field(&LOGCapturedEvent::file, EndsWith("LOGCaptureTest.cpp")),
                           Field(&LOGCapturedEvent::function, "TestBody"),
                           Field(&LOGCapturedEvent::seconds, AllOf(Ge(before), Le(before + 60)))));
  EXPECT_EQ(said(events[1]), "DEBUG a.b [" + events[1].thread + "] \"an object\"");
  EXPECT_NE(events[1].thread, first.thread);
}

TEST_F(LOGCaptureTest, MatchersTellEventsApart) {
  LOGCapture logs(*logger);
  LOG4VRK_INFO_KV(logger, "taken", "order", 17);
  const LOGCapturedEvent event = logs.events().at(0);
  const std::tuple<Matcher<LOGCapturedEvent>, Matcher<LOGCapturedEvent>> MATCHERS[] = {
      {HasLevel("INFO"), HasLevel(HasSubstr("WARN"))},
      {HasLogger("a.b"), HasLogger("a")},
      {HasMessage(StartsWith("tak")), HasMessage("take")},
      {HasThread(event.thread), HasThread("")},
      {HasField("order", "17"), HasField("order", "1")},
      {HasField("order", _), HasField("orders", _)},
      {Not(HasContext("order", _)), HasContext("order", "17")},
      {Logged(LOGLevel::INFO_OBJ, "taken"), Logged(LOGLevel::WARN_OBJ, "taken")},
      {Logged(LOGLevel::INFO_OBJ, Ne("")), Logged(LOGLevel::INFO_OBJ, "")},
  };
  for (const auto& [right, wrong] : MATCHERS) {
    EXPECT_THAT(event, right);
    EXPECT_THAT(event, Not(wrong));
  }
}

// Of two on one logger each gets every event, once; what they have changed is given back, unless somebody else has
// changed it since.
TEST_F(LOGCaptureTest, CapturesNestAndGiveBackWhatTheyHaveChanged) {
  const auto state = [&] {
    return (logger->getLevel() != nullptr ? logger->getLevel()->toString().toUtf8() : "inherited") +
           std::to_string(logger->getAdditivity());
  };
  {
    LOGCapture outer(*logger, {LOGLevel::INFO_OBJ});
    logger->debug("1");
    {
      LOGCapture inner(*logger, {LOGLevel::DEBUG_OBJ, LOGCaptureOptions::LEFT_OUT});
      EXPECT_EQ(state(), "DEBUG (captured)0");
      logger->debug("2");
      outer.clear();
      tree.getLogger("a.b.c")->debug("3");
      EXPECT_EQ(messagesOf(inner), (Texts{"2", "3"}));
    }
    EXPECT_EQ(state(), "INFO (captured)1");
    logger->info("4");
    EXPECT_EQ(messagesOf(outer), (Texts{"3", "4"}));
  }
  EXPECT_EQ(state(), "inherited1");
  EXPECT_EQ(root.texts, Texts{"4"});
  {
    LOGCapture logs(*logger, {LOGLevel::INFO_OBJ, LOGCaptureOptions::LEFT_OUT});
    logger->setLevel(LOGLevel::WARN_OBJ);
  }
  EXPECT_EQ(state(), "WARN1");
  EXPECT_TRUE(logger->getAllAppenders().atEnd());
}

TEST_F(LOGCaptureTest, CapturesBeginAndEndWhileOthersLog) {
  constexpr int THREADS = 4, EVENTS = 500;
  LOGCapture all(*tree.getRootLogger());
  std::vector<std::thread> threads;
  std::atomic<int> running{THREADS};
  for (int i = 0; i < THREADS; ++i) {
    threads.emplace_back([&, i] {
      for (int n = 0; n < EVENTS; ++n) LOG4VRK_INFO_KV(logger, i << ' ' << n, "n", n);
      --running;
    });
  }
  while (running > 0) LOGCapture(*logger, {LOGLevel::ALL_OBJ}).waitFor(1, milliseconds(1));
  for (std::thread& thread : threads) thread.join();
  std::map<std::string, int> next;
  for (const LOGCapturedEvent& event : all.events()) {
    const std::string thread = event.message.substr(0, 2);
    EXPECT_EQ(event.message, thread + std::to_string(next[thread]++));
  }
  EXPECT_EQ(all.events().size(), std::size_t{THREADS * EVENTS});
}

TEST_F(LOGCaptureTest, CaptureWaitsForEventsAsLongAsItIsTold) {
  LOGCapture logs(*logger);
  const auto begin = steady_clock::now();
  EXPECT_FALSE(logs.waitFor(1, milliseconds(30)));
  EXPECT_GE(steady_clock::now() - begin, milliseconds(30));
  EXPECT_TRUE(logs.waitFor(0, milliseconds(0)));
  std::thread thread([&] {
    logger->info("1");
    logger->info("2");
  });
  EXPECT_TRUE(logs.waitFor(2, LIMIT));
  EXPECT_EQ(messagesOf(logs), (Texts{"1", "2"}));
  thread.join();
}

// The logger's gets the text before the log call has returned, though a queue could wait for it; the queue's gets it
// from the queue's thread.
TEST_F(LOGCaptureTest, CaptureOfAQueueHasWhatComesOutOfIt) {
  LOGAsyncAppender queue;
  queue.setName("queue");
  queue.activateOptions();
  logger->addAppender(&queue);
  {
    LOGCapture behind(queue);
    LOG4VRK_INFO_F(logger, "{} of {}", 1, "two");
    LOGCapture before(*logger);
    LOG4VRK_INFO_F(logger, "{} of {}", 2, "two");
    EXPECT_EQ(messagesOf(before), Texts{"2 of two"});
    ASSERT_TRUE(behind.waitFor(2, LIMIT));
    EXPECT_EQ(messagesOf(behind), (Texts{"1 of two", "2 of two"}));
    EXPECT_NE(behind.events()[1].thread, before.events()[0].thread);
  }
  logger->info("3");
  logger->removeAppender(&queue);
  queue.close();
}

// What a document says stays in force; what it does not say is given back.
TEST(LOGCaptureInDocuments, StaysUntilADocumentNamesItsLogger) {
  const vrktest::TempDir dir;
  const auto apply = [&](const std::string& loggers) {
    const std::string document = "<log4j:configuration>" + loggers + "</log4j:configuration>";
    ASSERT_EQ(LOG4VRKConfigurator::initialize(dir.write("log.xml", document).c_str()), 1);
  };
  const std::tuple<const char*, const char*, const char*, int> DOCUMENTS[] = {
      {"<logger name='@'><level value='DEBUG'/></logger>", "DEBUG", "other level", 1},
      {"<logger name='@' additivity='false'><level value='INFO'/></logger>", "INFO", "the same level", 0},
      {"<logger name='@'/>", "ERROR", "no level", 1},
      {"<logger name='other'/>", "ERROR", "no logger", 1},
  };
  for (const auto& [document, level, what, additivity] : DOCUMENTS) {
    SCOPED_TRACE(what);
    const std::string name = std::string("shop.") + what;
    LOGLogger* const logger = LOGManager::getLogger(name.c_str());
    logger->setLevel(LOGLevel::ERROR_OBJ);
    const bool isNamed = std::string(document).find('@') != std::string::npos;
    {
      LOGCapture logs(name.c_str(), {LOGLevel::INFO_OBJ, LOGCaptureOptions::LEFT_OUT});
      EXPECT_EQ(logger->getLevel()->toString().toUtf8(), "INFO (captured)");
      apply("<logger name='shop'><level value='WARN'/></logger><root><level value='ERROR'/></root>");
      logger->info("1");
      LOG4VRKConfigurator::shutdown();
      logger->info("2");
      EXPECT_TRUE(logs.isAttached());
      apply(replaced(document, "@", name));
      EXPECT_EQ(logs.isAttached(), !isNamed);
      logger->info("3");
      EXPECT_EQ(messagesOf(logs), isNamed ? (Texts{"1", "2"}) : (Texts{"1", "2", "3"}));
    }
    EXPECT_EQ(logger->getLevel()->toString().toUtf8(), level);
    EXPECT_EQ(logger->getAdditivity(), additivity);
    EXPECT_TRUE(logger->getAllAppenders().atEnd());
  }
}

// While its own appender is at work, which must not be gone.
TEST_F(LOGCaptureTest, CaptureMayEndInsideALogCall) {
  auto logs = std::make_unique<LOGCapture>(*logger);
  HookMessage message("1", [&] { logs.reset(); });
  logger->info(&message);
  EXPECT_EQ(logs, nullptr);
  logger->info("2");
  EXPECT_EQ(root.texts, (Texts{"1", "2"}));
}

TEST_F(LOGCaptureTest, CaptureLeavesOutAnEventThatCannotBeRendered) {
  LOGCapture logs(*logger);
  int renderings = 0;
  HookMessage message("a message", [&] {
    if (++renderings == 1) throw std::runtime_error("not now");
  });
  logger->info(&message);
  EXPECT_TRUE(logs.events().empty());
  EXPECT_EQ(root.texts, Texts{"a message"});
  EXPECT_NE(log.text().find("LOGCapture::append -- an event is left out"), std::string::npos) << log.text();
}
