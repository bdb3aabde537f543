#include <pthread.h>

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

const struct {
  LOGLevel* level;
  void (LOGLogger::*object)(LOGObject*);
  void (LOGLogger::*text)(const I18NString&);
} SHORTCUTS[] = {{LOGLevel::DEBUG_OBJ, &LOGLogger::debug, &LOGLogger::debug},
                 {LOGLevel::INFO_OBJ, &LOGLogger::info, &LOGLogger::info},
                 {LOGLevel::WARN_OBJ, &LOGLogger::warn, &LOGLogger::warn},
                 {LOGLevel::ERROR_OBJ, &LOGLogger::error, &LOGLogger::error},
                 {LOGLevel::FATAL_OBJ, &LOGLogger::fatal, &LOGLogger::fatal}};

}  // namespace

TEST(LOGLogger, EveryWayToLogGoesByTheEffectiveLevel) {
  RecordingAppender appender;
  Tree tree;
  tree.getRootLogger()->addAppender(&appender);
  LOGLogger* const logger = tree.getLogger("a.b");
  LOGObject message("object");
  for (const bool own : {false, true}) {
    for (LOGLevel* effective : {LOGLevel::ALL_OBJ, LOGLevel::WARN_OBJ, LOGLevel::FATAL_OBJ, LOGLevel::OFF_OBJ}) {
      tree.getLogger("a")->setLevel(own ? LOGLevel::INFO_OBJ : effective);
      logger->setLevel(own ? effective : nullptr);
      EXPECT_TRUE(*logger->getChainedLevel() == *effective);
      for (const auto& shortcut : SHORTCUTS) {
        appender.texts.clear();
        (logger->*shortcut.object)(&message);
        (logger->*shortcut.text)("text");
        logger->log(shortcut.level, &message);
        logger->log(shortcut.level, "text");
        logger->l7dlog(shortcut.level, "key", &message);
        const bool enabled = shortcut.level->toInt() >= effective->toInt();
        EXPECT_EQ(logger->isEnabledFor(shortcut.level), enabled);
        EXPECT_EQ(appender.texts, enabled ? (Texts{"object", "text", "object", "text", "key"}) : Texts());
      }
      EXPECT_EQ(logger->isDebugEnabled(), effective->toInt() <= 10000);
    }
  }
  appender.texts.clear();
  logger->setLevel(LOGLevel::ERROR_OBJ);
  logger->assertLog(0, "does not hold");
  logger->assertLog(-1, "holds");
  logger->error(static_cast<LOGObject*>(nullptr));
  EXPECT_EQ(appender.texts, (Texts{"does not hold", "(null)"}));
}

TEST(LOGLogger, MacrosEvaluateTheirTextOnlyWhenItIsWanted) {
  RecordingAppender appender;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  logger->addAppender(&appender);
  logger->setLevel(LOGLevel::WARN_OBJ);
  int evaluated = 0;
  const auto next = [&] { return ++evaluated; };
  LOG4VRK_DEBUG(logger, next());
  LOG4VRK_INFO(logger, next());
  LOG4VRK_WARN(logger, "w" << next());
  LOG4VRK_ERROR(logger, "e" << next());
  if (evaluated == 2)
    LOG4VRK_FATAL(logger, "f" << next());
  else
    LOG4VRK_FATAL(logger, "a macro is one statement");
  const unsigned char byte = 200;
  LOG4VRK_FATAL(logger, std::string("s") << I18NString("\xC3\xBC") << 'c' << u'\u20AC' << true << -1L << byte << 1.5
                                         << LOGObject("o"));
  EXPECT_EQ(appender.texts, (Texts{"w1", "e2", "f3",
                                   "s\xC3\xBC"
                                   "c\xE2\x82\xACtrue-12001.5o"}));
}

TEST(LOGLogger, EventsGoUpToTheFirstLoggerThatIsNotAdditive) {
  RecordingAppender root("root"), parent("parent"), child("child");
  Texts order;
  for (RecordingAppender* each : {&root, &parent, &child}) {
    each->onActivate = [&order] { order.push_back("activate"); };
    each->onAppend = [&order, each](const std::string&) { order.push_back(each->getName().toUtf8()); };
  }
  Tree tree;
  tree.getRootLogger()->addAppender(&root);
  tree.getLogger("a")->addAppender(&parent);
  tree.getLogger("a.b.c")->addAppender(&child);
  const std::tuple<int, int, Texts> CASES[] = {{1, 1, {"activate", "child", "activate", "parent", "activate", "root"}},
                                               {7, 0, {"activate", "child", "activate", "parent"}},
                                               {0, 1, {"activate", "child"}}};
  for (const auto& [childAdditive, parentAdditive, expected] : CASES) {
    order.clear();
    tree.getLogger("a.b.c")->setAdditivity(childAdditive);
    tree.getLogger("a")->setAdditivity(parentAdditive);
    tree.getLogger("a.b.c")->info("event");
    EXPECT_EQ(order, expected);
  }
}

TEST(LOGLogger, LetsNothingButItsAssertionsOut) {
  RecordingAppender appender;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  logger->addAppender(&appender);
  const std::function<void()> NULL_LEVELS[] = {[&] { logger->log(nullptr, "text"); },
                                               [&] { logger->l7dlog(nullptr, "key"); },
                                               [&] { logger->isEnabledFor(nullptr); }};
  for (const auto& call : NULL_LEVELS) EXPECT_EQ(assertionOf(call), "LOGLogger: VRK_ASSERT(level);");
  EXPECT_THROW(logger->addAppender(nullptr), VRKAssertError);
  const InternalLog log;
  const HookMessage::Hook RAISING[] = {[] { throw VRKThrowable("ours", "Test.cpp", 1); },
                                       [] { throw std::runtime_error("standard"); }, [] { throw 7; }};
  for (const auto& raise : RAISING) {
    HookMessage message(
        "", [] {}, raise);
    EXPECT_NO_THROW(logger->info(&message));
  }
  EXPECT_EQ(log.count("log4vrk:ERROR VRKThrowable: ours, at Test:1, VRK_RETHROW LOGLoggingEvent:"), 1);
  EXPECT_EQ(log.count("log4vrk:ERROR VRKStdExceptionError: standard, at LOGLoggingEvent:"), 1);
  EXPECT_TRUE(appender.texts.empty());
  tree.getRootLogger()->setLevel(nullptr);
  EXPECT_THROW(logger->info("nobody on the way up has a level"), VRKAssertError);
}

TEST(LOGLogger, WhatAnAppenderRaisesIsReportedAndDecidesWhoElseGetsTheEvent) {
  const std::string UNKNOWN = "log4vrk:ERROR LOGLogger::callAppenders -- unable to lock mutex";
  const std::string APPEND = "log4vrk:ERROR LOGAppenderSkeleton::doAppend -- ";
  const auto text = [](const std::string&) { throw I18NRuntimeError("bad text", "Test.cpp", 1); };
  const auto ours = [](const std::string&) { throw VRKThrowable("ours", "Test.cpp", 2); };
  const auto other = [](const std::string&) { throw std::runtime_error("standard"); };
  const struct {
    std::function<void(const std::string&)> append;
    std::function<void()> activate;
    Texts lines;
  } CASES[] = {
      {text, {}, {APPEND + "RunTime Error in I18NString I18NRuntimeError: bad text, at Test:1"}},
      {ours, {}, {APPEND + "VRK Exception occured VRKThrowable: ours, at Test:2"}},
      {other, {}, {APPEND + "An Exception occured", UNKNOWN}},
      {{}, [&] { ours(""); }, {UNKNOWN + " VRKThrowable: ours, at Test:2"}},
      {{}, [&] { other(""); }, {UNKNOWN}},
  };
  for (const auto& c : CASES) {
    RecordingAppender angry("angry"), neighbour("neighbour"), root;
    angry.onAppend = c.append;
    angry.onActivate = c.activate;
    Tree tree;
    LOGLogger* const logger = tree.getLogger("a");
    for (RecordingAppender* each : {&angry, &neighbour}) logger->addAppender(each);
    tree.getRootLogger()->addAppender(&root);
    const InternalLog log;
    EXPECT_NO_THROW(logger->info("event"));
    EXPECT_EQ(log.lines(), c.lines);
    const bool contained = c.lines.back().find(UNKNOWN) != 0;
    EXPECT_EQ(neighbour.texts.size() + root.texts.size(), contained ? 2u : 0u);
    angry.onAppend = nullptr;
    angry.onActivate = nullptr;
    std::thread([&] { logger->info("the lock is free"); }).join();
    EXPECT_EQ(root.texts.back(), "the lock is free");
  }
}

TEST(LOGLogger, LevelsThatItHasHadStayValidWhileOthersReadThem) {
  LOGLogger logger("a");
  LOGLevel custom(12345, "CUSTOM", 5);
  logger.setLevel(&custom);
  const LOGLevel* const first = logger.getLevel();
  custom = LOGLevel(1, "CHANGED", 1);
  {
    const Meanwhile reading({[&] {
      const LOGLevel* const level = logger.getLevel();
      EXPECT_TRUE(level == nullptr || (level->toString() != "CHANGED" && level->toInt() >= 10000));
    }});
    for (int i = 0; i < 2000; ++i) logger.setLevel(i % 4 == 0 ? nullptr : LOGLevel::toLevel(i % 4 * 10000L));
  }
  LOGLevel again(12345, "CUSTOM", 5), renamed(12345, "RENAMED", 5);
  logger.setLevel(&again);
  EXPECT_EQ(logger.getLevel(), first) << "one for each value";
  logger.setLevel(&renamed);
  EXPECT_TRUE(logger.getLevel()->toString() == "RENAMED" && first->toString() == "CUSTOM");
}

TEST(LOGLogger, AnAppenderMayBeDeletedAsSoonAsItIsRemoved) {
  const Deadline deadline(60);
  RecordingAppender steady("steady");
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a.b");
  tree.getRootLogger()->addAppender(&steady);
  std::atomic<std::size_t> sent{0};
  auto logging = std::make_unique<Meanwhile>(std::vector<std::function<void()>>(3, [&] {
    logger->info("event");
    ++sent;
  }));
  for (int i = 0; i < 500; ++i) {
    RecordingAppender passing("passing");
    LOGLogger* const where = i % 2 == 0 ? logger : tree.getRootLogger();
    where->addAppender(&passing);
    const std::size_t before = sent;
    eventually([&] { return sent > before; });
    i % 3 == 0 ? where->removeAppender("passing") : where->removeAppender(&passing);
  }
  logging.reset();
  EXPECT_EQ(steady.texts.size(), sent);
}

TEST(LOGLogger, AppendersMayRemoveOrMoveThemselvesAndTheirNeighboursMissNothing) {
  const Deadline deadline(30);
  for (const bool whileActivating : {false, true}) {
    RecordingAppender before("before"), leaving("leaving"), moving("moving"), last("last");
    LOGLogger logger("a");
    logger.setLevel(LOGLevel::ALL_OBJ);
    const auto leave = [&] { logger.removeAppender("leaving"); };
    if (whileActivating) leaving.onActivate = leave;
    leaving.onAppend = [&](const std::string&) { leave(); };
    moving.onAppend = [&](const std::string&) {  // to the end of the list
      logger.removeAppender(&moving);
      logger.addAppender(&moving);
    };
    for (RecordingAppender* each : {&before, &leaving, &moving, &last}) logger.addAppender(each);
    for (const char* text : {"first", "second"}) logger.info(text);
    for (const RecordingAppender* each : {&before, &moving, &last})
      EXPECT_EQ(each->texts.size(), 2u) << each->getName().toUtf8();
    EXPECT_FALSE(logger.isAttached(&leaving));
  }
}

TEST(LOGLogger, AConfiguredAppenderMayBeRemovedByTheMessageThatItWrites) {
  const TempDir dir;
  LOG4VRKConfigurator::initialize(fileDocument(dir).c_str());
  LOGDOMConfigurator::shutdown();  // the root has the last share
  HookMessage message("removed", [] { LOGManager::getRootLogger()->removeAppender("file"); });
  LOGManager::getRootLogger()->info(&message);
  EXPECT_EQ(dir.read("all.log"), "removed\n");
}

TEST(LOGLogger, ACancelledThreadLeavesNoLockBehind) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers do not follow a forced unwind; the release build does";
#endif
  const Deadline deadline(30);
  std::atomic<pthread_t> inside{};
  RecordingAppender slow;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  tree.getRootLogger()->addAppender(&slow);
  slow.onAppend = [&](const std::string&) {
    inside = ::pthread_self();
    for (;;) VRKThread::sleep(1000);
  };
  std::thread thread([&] { logger->info("cancelled"); });
  ASSERT_TRUE(eventually([&] { return inside.load() != pthread_t{}; }));
  ::pthread_cancel(inside);
  thread.join();
  slow.onAppend = nullptr;
  logger->info("goes on");
  EXPECT_EQ(slow.texts.back(), "goes on");
}
