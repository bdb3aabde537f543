#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGMessage.h"
#include "log4vrk/platform/VRKFault.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "tests/support/Doubles.h"
#include "tests/support/InternalLog.h"
#include "tests/support/Process.h"

namespace {

using vrktest::HookMessage;
using vrktest::RecordingAppender;
using vrktest::Texts;
using vrktest::Tree;

/// A message that cannot be copied into an event.
class UncloneableMessage : public LOGObject {
 public:
  explicit UncloneableMessage(std::function<void()> raise) : m_raise(std::move(raise)) {}
  LOGObject* clone() const override {
    m_raise();
    return nullptr;
  }

 private:
  std::function<void()> m_raise;
};

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
  LOGLogger* const parent = tree.getLogger("a");
  LOGLogger* const logger = tree.getLogger("a.b");
  LOGObject message("object");
  for (const bool own : {false, true}) {
    for (LOGLevel* effective :
         {LOGLevel::ALL_OBJ, LOGLevel::DEBUG_OBJ, LOGLevel::WARN_OBJ, LOGLevel::FATAL_OBJ, LOGLevel::OFF_OBJ}) {
      parent->setLevel(own ? LOGLevel::INFO_OBJ : effective);
      logger->setLevel(own ? effective : nullptr);
      EXPECT_TRUE(*logger->getChainedLevel() == *effective);
      for (const auto& shortcut : SHORTCUTS) {
        appender.texts.clear();
        (logger->*shortcut.object)(&message);
        (logger->*shortcut.text)("text");
        logger->log(shortcut.level, &message);
        logger->log(shortcut.level, "text");
        logger->l7dlog(shortcut.level, "key");
        logger->l7dlog(shortcut.level, "key", &message);
        const bool enabled = shortcut.level->toInt() >= effective->toInt();
        EXPECT_EQ(logger->isEnabledFor(shortcut.level), enabled);
        EXPECT_EQ(appender.texts, enabled ? (Texts{"object", "text", "object", "text", "key", "key"}) : Texts());
      }
      EXPECT_EQ(logger->isDebugEnabled(), effective->toInt() <= 10000);
      EXPECT_EQ(logger->isInfoEnabled(), effective->toInt() <= 20000);
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
  tree.getRootLogger()->addAppender(&appender);
  LOGLogger* const logger = tree.getLogger("a");
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
  EXPECT_EQ(appender.texts, (Texts{"w1", "e2", "f3"}));

  appender.texts.clear();
  LOG4VRK_FATAL(logger, std::string("s") << std::string_view("v") << I18NString("\xC3\xBC") << 'c' << u'\u20AC' << true
                                         << -1L << 2u << static_cast<unsigned char>(200) << 1.5 << LOGObject("o")
                                         << *LOGLevel::INFO_OBJ->toString().toBytes().get());
  EXPECT_EQ(appender.texts, (Texts{"sv\xC3\xBC"
                                   "c\xE2\x82\xACtrue-122001.5oI"}));
}

TEST(LOGLogger, EventsGoUpToTheFirstLoggerThatIsNotAdditive) {
  RecordingAppender root("root"), parent("parent"), child("child");
  Texts order;
  for (RecordingAppender* each : {&root, &parent, &child}) {
    each->onAppend = [&order, each](const std::string&) { order.push_back(each->getName().toUtf8()); };
  }
  Tree tree;
  tree.getRootLogger()->addAppender(&root);
  tree.getLogger("a")->addAppender(&parent);
  LOGLogger* const logger = tree.getLogger("a.b.c");
  logger->addAppender(&child);
  const struct {
    int childAdditive, parentAdditive;
    Texts expected;
  } CASES[] = {{1, 1, {"child", "parent", "root"}},
               {1, 0, {"child", "parent"}},
               {0, 1, {"child"}},
               {7, 1, {"child", "parent", "root"}}};
  for (const auto& c : CASES) {
    order.clear();
    logger->setAdditivity(c.childAdditive);
    tree.getLogger("a")->setAdditivity(c.parentAdditive);
    logger->info("event");
    EXPECT_EQ(order, c.expected) << c.childAdditive << c.parentAdditive;
  }
}

TEST(LOGLogger, WithoutARepositoryOnlyTheShortcutsLog) {
  RecordingAppender appender;
  LOGLogger logger("alone");
  logger.addAppender(&appender);
  logger.setLevel(LOGLevel::INFO_OBJ);
  for (const auto& shortcut : SHORTCUTS) (logger.*shortcut.text)("text");
  EXPECT_EQ(appender.texts, (Texts{"(null)", "(null)", "(null)", "(null)"})) << "no repository, nothing to render with";
  logger.log(LOGLevel::FATAL_OBJ, "text");
  logger.log(nullptr, "text");
  logger.l7dlog(nullptr, "key");
  EXPECT_FALSE(logger.isEnabledFor(nullptr) || logger.isEnabledFor(LOGLevel::FATAL_OBJ));
  EXPECT_EQ(appender.texts.size(), 4u);
}

TEST(LOGLogger, LetsNothingButItsAssertionsOut) {
  RecordingAppender appender;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  logger->addAppender(&appender);
  LOGObject message;
  const std::function<void()> NULL_LEVELS[] = {
      [&] { logger->log(nullptr, &message); }, [&] { logger->log(nullptr, "text"); },
      [&] { logger->l7dlog(nullptr, "key"); }, [&] { logger->isEnabledFor(nullptr); }};
  for (const auto& call : NULL_LEVELS) {
    try {
      call();
      ADD_FAILURE();
    } catch (const VRKAssertError& error) {
      EXPECT_EQ(error.getText(), "VRK_ASSERT(level);");
      EXPECT_EQ(error.getSource(), "LOGLogger");
    }
  }
  UncloneableMessage ours([] { throw VRKThrowable("ours", "Test.cpp", 1); }),
      standard([] { throw std::runtime_error("standard"); }), other([] { throw 7; });
  const InternalLog log;
  for (UncloneableMessage* each : {&ours, &standard, &other}) EXPECT_NO_THROW(logger->info(each));
  EXPECT_EQ(log.count("log4vrk:ERROR VRKThrowable: ours, at Test:1, VRK_RETHROW LOGLoggingEvent:"), 1);
  EXPECT_EQ(log.count("log4vrk:ERROR VRKStdExceptionError: standard, at LOGLoggingEvent:"), 1);
  EXPECT_TRUE(appender.texts.empty());

  tree.getRootLogger()->setLevel(nullptr);
  EXPECT_THROW(logger->info("nobody on the way up has a level"), VRKAssertError);
}

TEST(LOGLogger, WhatAnAppenderRaisesIsReportedAndDecidesWhoElseGetsTheEvent) {
  constexpr bool OTHERS_GET_IT = true;
  const std::string UNKNOWN = "log4vrk:ERROR LOGLogger::callAppenders -- unable to lock mutex";
  const auto text = [] { throw I18NRuntimeError("bad text", "Test.cpp", 1); };
  const auto ours = [] { throw VRKThrowable("ours", "Test.cpp", 2); };
  const auto other = [] { throw std::runtime_error("standard"); };
  const struct {
    std::function<void()> append, activate;
    Texts lines;
    bool othersGetIt;
  } CASES[] = {
      {text,
       {},
       {"log4vrk:ERROR LOGAppenderSkeleton::doAppend -- RunTime Error in I18NString I18NRuntimeError: bad text, at "
        "Test:1"},
       OTHERS_GET_IT},
      {ours,
       {},
       {"log4vrk:ERROR LOGAppenderSkeleton::doAppend -- VRK Exception occured VRKThrowable: ours, at Test:2"},
       OTHERS_GET_IT},
      {other, {}, {"log4vrk:ERROR LOGAppenderSkeleton::doAppend -- An Exception occured", UNKNOWN}, !OTHERS_GET_IT},
      {{}, ours, {UNKNOWN + " VRKThrowable: ours, at Test:2"}, !OTHERS_GET_IT},
      {{}, other, {UNKNOWN}, !OTHERS_GET_IT},
  };
  for (const auto& c : CASES) {
    RecordingAppender angry("angry"), neighbour("neighbour"), root;
    if (c.append) angry.onAppend = [&](const std::string&) { c.append(); };
    angry.onActivate = c.activate;
    Tree tree;
    LOGLogger* const logger = tree.getLogger("a");
    logger->addAppender(&angry);
    logger->addAppender(&neighbour);
    tree.getRootLogger()->addAppender(&root);
    const InternalLog log;
    EXPECT_NO_THROW(logger->info("event"));
    EXPECT_EQ(log.lines(), c.lines);
    EXPECT_EQ(neighbour.texts.size() + root.texts.size(), c.othersGetIt ? 2u : 0u);
    LOGLoggingEvent event("LOGLogger", logger, LOGLevel::INFO_OBJ, nullptr);
    if (!c.othersGetIt) {
      EXPECT_ANY_THROW(logger->callAppenders(&event)) << "raised again to whoever calls it directly";
    }
    angry.onAppend = nullptr;
    angry.onActivate = nullptr;
    logger->info("the lock is free");
    EXPECT_EQ(root.texts.back(), "the lock is free");
  }
}

TEST(LOGLogger, ALockThatCannotBeTakenIsReportedUnderTheOperationsNameAndRaised) {
  RecordingAppender appender("x");
  LOGLogger logger("a");
  LOGLoggingEvent event("LOGLogger", &logger, LOGLevel::INFO_OBJ, nullptr);
  const struct {
    const char* operation;
    std::function<void()> call;
  } CASES[] = {{"addAppender", [&] { logger.addAppender(&appender); }},
               {"callAppenders", [&] { logger.callAppenders(&event); }},
               {"closeNestedAppenders", [&] { logger.closeNestedAppenders(); }},
               {"getAllAppenders", [&] { logger.getAllAppenders(); }},
               {"getAppender", [&] { logger.getAppender("x"); }},
               {"isAttached", [&] { logger.isAttached(&appender); }},
               {"removeAllAppenders", [&] { logger.removeAllAppenders(); }},
               {"removeAppender", [&] { logger.removeAppender(&appender); }},
               {"removeAppender", [&] { logger.removeAppender("x"); }},
               {"setLevel", [&] { logger.setLevel(LOGLevel::INFO_OBJ); }}};
  for (const auto& c : CASES) {
    const InternalLog log;
    VRKFault::arm(VRKFault::LOCK);
    EXPECT_THROW(c.call(), VRKSystemError) << c.operation;
    VRKFault::disarm();
    ASSERT_EQ(log.lines().size(), 1u) << c.operation;
    EXPECT_EQ(
        log.count(std::string("log4vrk:ERROR LOGLogger::") + c.operation + " -- unable to lock mutex VRKSystemError: "),
        1);
  }
  const InternalLog log;
  EXPECT_THROW(logger.addAppender(nullptr), VRKAssertError);
  EXPECT_EQ(log.count("LOGLogger::addAppender -- unable to lock mutex VRKAssertError: VRK_ASSERT(newAppender);"), 1);
  VRKFault::arm(VRKFault::LOCK);
  EXPECT_NO_THROW(logger.forcedLog("fqn", LOGLevel::INFO_OBJ, nullptr));
  VRKFault::disarm();
}

TEST(LOGLogger, LevelsThatItHasHadStayValidWhileOthersReadThem) {
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  LOGLevel custom(12345, "CUSTOM", 5);
  logger->setLevel(&custom);
  LOGLevel* const first = logger->getLevel();
  EXPECT_NE(first, &custom);
  custom = LOGLevel(1, "CHANGED", 1);
  std::atomic<bool> done{false};
  std::thread reader([&] {
    while (!done) {
      LOGLevel* const level = logger->getLevel();
      EXPECT_TRUE(level == nullptr || (level->toString() != "CHANGED" && level->toInt() >= 10000));
      logger->isInfoEnabled();
    }
  });
  for (int i = 0; i < 2000; ++i) {
    logger->setLevel(i % 4 == 0 ? nullptr : LOGLevel::toLevel((i % 4) * 10000L));
  }
  done = true;
  reader.join();
  LOGLevel again(12345, "CUSTOM", 5), renamed(12345, "RENAMED", 5);
  logger->setLevel(&again);
  EXPECT_EQ(logger->getLevel(), first) << "one for each value";
  logger->setLevel(&renamed);
  EXPECT_EQ(logger->getLevel()->toString(), "RENAMED");
  EXPECT_EQ(first->toString(), "CUSTOM");
}

TEST(LOGLogger, ARootCanBeCopiedAndNoOtherLogger) {
  RecordingAppender appender("x");
  LOGRootLogger root(nullptr);
  EXPECT_TRUE(*root.getLevel() == *LOGLevel::DEBUG_OBJ && root.getName() == "root");
  root.setLevel(LOGLevel::ERROR_OBJ);
  root.setAdditivity(0);
  root.addAppender(&appender);
  const std::unique_ptr<LOGObject> object(root.clone());
  auto* const copy = dynamic_cast<LOGRootLogger*>(object.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_TRUE(copy->getAppender("x") == &appender && copy->getAdditivity() == 0 &&
              *copy->getLevel() == *LOGLevel::ERROR_OBJ);
  EXPECT_NE(copy->getLevel(), root.getLevel());
  EXPECT_TRUE(*copy == root && *copy != LOGLogger("other"));
  try {
    LOGLogger("a").clone();
    FAIL();
  } catch (const VRKAssertError& error) {
    EXPECT_EQ(error.getText(), "VRK_ASSERT_NAMED(FALSE, \"Not allowed to clone LOGLogger object.\");");
    EXPECT_EQ(error.getSource(), "LOGLogger");
  }
}

TEST(LOGLogger, AnAppenderMayBeDeletedAsSoonAsItIsRemoved) {
  const vrktest::Deadline deadline(60);
  RecordingAppender steady("steady");
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a.b");
  tree.getRootLogger()->addAppender(&steady);
  std::atomic<bool> done{false};
  std::atomic<std::size_t> sent{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&] {
      for (; !done; ++sent) logger->info("event");
    });
  }
  for (int i = 0; i < 500; ++i) {
    const std::unique_ptr<RecordingAppender> passing(new RecordingAppender("passing"));
    LOGLogger* const where = i % 2 == 0 ? logger : tree.getRootLogger();
    where->addAppender(passing.get());
    const std::size_t before = sent;
    vrktest::eventually([&] { return sent > before; });
    if (i % 3 == 0) {
      where->removeAppender("passing");
    } else {
      where->removeAppender(passing.get());
    }
  }
  done = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(steady.texts.size(), sent);
}

// Also an appender that goes while it is called; its neighbours miss nothing.
TEST(LOGLogger, AnAppenderMayRemoveItself) {
  for (const bool whileActivating : {false, true}) {
    RecordingAppender before("before"), leaving("leaving"), after("after"), last("last");
    LOGLogger logger("a");
    logger.setLevel(LOGLevel::ALL_OBJ);
    const auto leave = [&] { logger.removeAppender("leaving"); };
    if (whileActivating) {
      leaving.onActivate = leave;
    } else {
      leaving.onAppend = [&](const std::string&) { leave(); };
    }
    for (RecordingAppender* each : {&before, &leaving, &after, &last}) logger.addAppender(each);
    logger.info("first");
    logger.info("second");
    EXPECT_EQ(before.texts.size(), 2u);
    EXPECT_LE(leaving.texts.size(), 1u);
    EXPECT_EQ(after.texts.size(), 2u) << whileActivating;
    EXPECT_EQ(last.texts.size(), 2u);
    EXPECT_FALSE(logger.isAttached(&leaving));
  }
}

TEST(LOGLogger, ACancelledThreadLeavesNoLockBehind) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizers that come with this one take the reference to a forced unwind for a null one";
#endif
  const vrktest::Deadline deadline(30);
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
  ASSERT_TRUE(vrktest::eventually([&] { return inside.load() != pthread_t{}; }));
  ::pthread_cancel(inside);
  thread.join();
  slow.onAppend = nullptr;
  logger->info("goes on");
  EXPECT_EQ(slow.texts.back(), "goes on");
}
