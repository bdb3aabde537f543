#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

using LOGLoggerTest = TreeTest;

using LogObject = void (LOGLogger::*)(LOGObject*);
using LogText = void (LOGLogger::*)(const I18NString&);
const std::tuple<LOGLevel*, LogObject, LogText> SHORTCUTS[] = {
    {LOGLevel::DEBUG_OBJ, &LOGLogger::debug, &LOGLogger::debug},
    {LOGLevel::INFO_OBJ, &LOGLogger::info, &LOGLogger::info},
    {LOGLevel::WARN_OBJ, &LOGLogger::warn, &LOGLogger::warn},
    {LOGLevel::ERROR_OBJ, &LOGLogger::error, &LOGLogger::error},
    {LOGLevel::FATAL_OBJ, &LOGLogger::fatal, &LOGLogger::fatal}};

}  // namespace

// Loggers of a repository of the library's own class remember what is enabled, until any of it changes, also while
// other threads ask.
TEST_F(LOGLoggerTest, EveryWayToLogGoesByTheEffectiveLevel) {
  LOGHierarchy exact(new LOGRootLogger(LOGLevel::DEBUG_OBJ));
  exact.getRootLogger()->addAppender(&root);
  LOGObject message("object");
  for (int run = 0; run < 200; ++run) {
    LOGHierarchy& repository = run % 2 == 0 ? exact : tree;
    LOGLogger* const child = repository.getLogger("a.b");
    LOGLogger* const parent = repository.getLogger(run % 3 == 0 ? "a" : "elsewhere");
    const Meanwhile asking({[&] { static_cast<void>(child->isDebugEnabled()); }});
    const bool own = run % 5 == 0;
    for (LOGLevel* effective : {LOGLevel::ALL_OBJ, LOGLevel::WARN_OBJ, LOGLevel::FATAL_OBJ, LOGLevel::OFF_OBJ}) {
      child->setParent(parent);
      parent->setLevel(own ? LOGLevel::INFO_OBJ : effective);
      child->setLevel(own ? effective : nullptr);
      EXPECT_TRUE(*child->getChainedLevel() == *effective);
      for (const auto& [level, logObject, logText] : SHORTCUTS) {
        root.texts.clear();
        std::invoke(logObject, child, &message);
        std::invoke(logText, child, "text");
        child->log(level, &message);
        child->log(level, "text");
        child->l7dlog(level, "key", &message);
        const bool enabled = level->toInt() >= effective->toInt();
        EXPECT_EQ(child->isEnabledFor(level), enabled);
        EXPECT_EQ(root.texts, enabled ? (Texts{"object", "text", "object", "text", "key"}) : Texts());
      }
      EXPECT_EQ(child->isDebugEnabled(), effective->toInt() <= 10000);
      repository.setThreshold(LOGLevel::OFF_OBJ);
      EXPECT_FALSE(child->isEnabledFor(LOGLevel::FATAL_OBJ));
      repository.setThreshold(LOGLevel::ALL_OBJ);
    }
  }
  exact.getRootLogger()->removeAppender(&root);
  root.texts.clear();
  logger->setLevel(LOGLevel::ERROR_OBJ);
  logger->assertLog(0, "does not hold");
  logger->assertLog(-1, "holds");
  logger->error(static_cast<LOGObject*>(nullptr));
  EXPECT_EQ(root.texts, (Texts{"does not hold", "(null)"}));
}

TEST_F(LOGLoggerTest, TakesTextsOfEveryKind) {
  const char16_t unpaired[] = {u'x', 0xD800, 0};
  struct Reader : LOGAppenderSkeleton {
    void append(LOGLoggingEvent* event) override { text = event->getMessage()->toString().view(); }
    std::u16string text;
  } reader;
  logger->addAppender(&reader);
  const auto logged = [&](const auto& text) {
    root.texts.clear();
    logger->debug(text);
    logger->fatal(text);
    logger->log(LOGLevel::INFO_OBJ, text);
    logger->l7dlog(LOGLevel::INFO_OBJ, text);
    logger->l7dlog(LOGLevel::INFO_OBJ, text, nullptr);
    logger->assertLog(0, text);
    logger->forcedLog("fqn", LOGLevel::INFO_OBJ, text);
    EXPECT_EQ(root.texts, Texts(7, root.texts.at(0)));
    EXPECT_EQ(LOGManager::getLogger(text), LOGManager::getLogger(I18NString(text)));
    return root.texts[0];
  };
  const std::string utf8 = "\u00fc " + std::string(600, 'x');
  EXPECT_EQ(logged("literal"), "literal");
  EXPECT_EQ(logged(utf8), utf8);
  EXPECT_EQ(logged(utf8.c_str()), utf8);
  EXPECT_EQ(logged(std::string_view(utf8).substr(0, 3)), "\u00fc ");
  EXPECT_EQ(logged(u"\u00fc"), "\u00fc");
  EXPECT_EQ(logged(std::u16string(u"\u20ac")), "\u20ac");
  EXPECT_EQ(logged(L"\u00fc\U0001F600"), "\u00fc\U0001F600");
  EXPECT_EQ(logged(std::wstring{L'a', static_cast<wchar_t>(0x110000), static_cast<wchar_t>(0xD800)}), "a\uFFFD\uFFFD");
  EXPECT_EQ(logged(I18NString("text")), "text");
  EXPECT_EQ(logged("ill\xff"), "ill\uFFFD");
  EXPECT_EQ(logged(static_cast<const char*>(nullptr)), "");
  EXPECT_EQ(logged(std::u16string_view(unpaired)), "x\uFFFD");
  EXPECT_EQ(reader.text, unpaired) << "it stays what it was";
  logger->removeAppender(&reader);
}

TEST_F(LOGLoggerTest, EventsGoUpToTheFirstLoggerThatIsNotAdditive) {
  LOGLogger* const child = tree.getLogger("a.b.c");
  logger->addAppender(&other);
  Texts order;
  for (RecordingAppender* each : {&root, &other}) {
    each->onActivate = [&] { order.push_back("activate"); };
    each->onAppend = [&, each](const std::string&) { order.push_back(each->getName().toUtf8()); };
  }
  const std::tuple<int, int, Texts> CASES[] = {
      {1, 1, {"activate", "other", "activate", "root"}}, {7, 0, {"activate", "other"}}, {0, 1, {}}};
  for (const auto& [ofChild, ofParent, expected] : CASES) {
    order.clear();
    child->setAdditivity(ofChild);
    logger->setAdditivity(ofParent);
    child->info("event");
    EXPECT_EQ(order, expected);
  }
}

TEST_F(LOGLoggerTest, LetsNothingButItsAssertionsOut) {
  const std::function<void()> NULL_LEVELS[] = {[&] { logger->log(nullptr, "text"); },
                                               [&] { logger->l7dlog(nullptr, "key"); },
                                               [&] { logger->isEnabledFor(nullptr); }};
  for (const auto& call : NULL_LEVELS) EXPECT_EQ(assertionOf(call), "LOGLogger: VRK_ASSERT(level);");
  EXPECT_THROW(logger->addAppender(nullptr), VRKAssertError);
  const HookMessage::Hook RAISING[] = {[] { throw VRKThrowable("ours", "Test.cpp", 1); },
                                       [] { throw std::runtime_error("standard"); }, [] { throw 7; }};
  for (const auto& raise : RAISING) {
    HookMessage message("", nullptr, raise);
    EXPECT_NO_THROW(logger->info(&message));
  }
  EXPECT_EQ(log.count("log4vrk:ERROR VRKThrowable: ours, at Test:1, VRK_RETHROW LOGLoggingEvent:"), 1);
  EXPECT_EQ(log.count("log4vrk:ERROR VRKStdExceptionError: standard, at LOGLoggingEvent:"), 1);
  EXPECT_EQ(root.texts, Texts());
  tree.getRootLogger()->setLevel(nullptr);
  EXPECT_THROW(logger->info("nobody on the way up has a level"), VRKAssertError);
}

TEST_F(LOGLoggerTest, WhatAnAppenderRaisesIsReportedAndDecidesWhoElseGetsTheEvent) {
  const std::string UNKNOWN = "log4vrk:ERROR LOGLogger::callAppenders -- unable to lock mutex";
  const std::string APPEND = "log4vrk:ERROR LOGAppenderSkeleton::doAppend -- ";
  const auto text = [] { throw I18NRuntimeError("bad text", "Test.cpp", 1); };
  const auto ours = [] { throw VRKThrowable("ours", "Test.cpp", 2); };
  const auto standard = [] { throw std::runtime_error("standard"); };
  const std::tuple<bool, std::function<void()>, Texts> CASES[] = {
      {false, text, {APPEND + "RunTime Error in I18NString I18NRuntimeError: bad text, at Test:1"}},
      {false, ours, {APPEND + "VRK Exception occured VRKThrowable: ours, at Test:2"}},
      {false, standard, {APPEND + "An Exception occured", UNKNOWN}},
      {true, ours, {UNKNOWN + " VRKThrowable: ours, at Test:2"}},
      {true, standard, {UNKNOWN}},
  };
  logger->addAppender(&other);
  for (const auto& [activating, raise, lines] : CASES) {
    other.onAppend = [&, hook = raise](const std::string& event) { return event == "event" ? hook() : void(); };
    other.onActivate = activating ? raise : nullptr;
    root.texts.clear();
    const InternalLog reported;
    EXPECT_NO_THROW(logger->info("event"));
    EXPECT_EQ(reported.lines(), lines);
    EXPECT_EQ(root.texts.size(), lines.back().find(UNKNOWN) == 0 ? 0u : 1u);
    other.onActivate = nullptr;
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

TEST(LOGLogger, AppendersMayRemoveOrMoveThemselvesAndTheirNeighboursMissNothing) {
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
