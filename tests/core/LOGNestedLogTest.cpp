// Log calls that application code makes while the library calls it.

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

/// With a second appender at the logger.
struct NestedLog : TreeTest {
  NestedLog() { logger->addAppender(&child); }

  RecordingAppender& child = other;
};

}  // namespace

TEST_F(NestedLog, IsDeliveredOnceTheOuterCallIsOverWhereverItCameFrom) {
  RecordingAppender passing("passing");
  LOGLogger* target = nullptr;
  bool armed = false;
  const auto inner = [&] {
    if (!std::exchange(armed, false)) return;
    target->info("inner 1");
    target->info("inner 2");
  };
  HookMessage message("outer", inner);
  HookFilter filter([&] { return inner(), LOGFilter::m_NEUTRAL; });
  HookListener listener([&](auto*, auto*) { inner(); });
  HookFactory factory([&](const I18NString& name) {
    inner();
    return new LOGLogger(name);
  });
  tree.addHierarchyEventListener(&listener);
  child.onActivate = inner;
  child.onAppend = [&](const std::string& text) {
    if (text == "outer") inner();
  };
  int made = 0;
  LOGLogger* const z = tree.getLogger("z");
  const std::pair<std::function<void()>, bool> PLACES[] = {
      {[&] { logger->info(&message); }, true},  // activateOptions()
      {[&] { child.onActivate = nullptr, child.addFilter(&filter), logger->info("outer"), child.clearFilters(); },
       true},
      {[&] { logger->info("outer"); }, true},  // append()
      {[&] { child.onAppend = nullptr, logger->info(&message); }, true},
      {[&] { tree.getLogger(I18NString("new.") + ++made, &factory); }, false},
      {[&] { logger->addAppender(&passing), logger->removeAppender(&passing); }, false},
      {[&] { passing.onClose = inner, z->addAppender(&passing), z->removeAllAppenders(); }, false},
  };
  for (const auto& [outer, logsItself] : PLACES) {
    for (const char* name : {"a.b", "a.b.c", "z"}) {
      root.texts.clear();
      target = tree.getLogger(name);
      armed = true;
      outer();
      EXPECT_EQ(root.texts, logsItself ? (Texts{"outer", "inner 1", "inner 2"}) : (Texts{"inner 1", "inner 2"}))
          << "place " << (&outer - &PLACES[0].first) << " to " << name;
    }
  }
}

TEST_F(NestedLog, KeepsTheOrderAtEveryDepthAndOutlivesAnAppenderThatRaises) {
  child.onAppend = [&](const std::string& text) {
    for (const char* next : {"1", "2"}) {
      if (text.size() < 3) logger->info(I18NString(std::string_view(text + next)));
    }
    if (text == "x1") throw std::runtime_error("after it has logged");
  };
  logger->info("x");
  EXPECT_EQ(child.texts, (Texts{"x", "x1", "x2", "x11", "x12", "x21", "x22"}));
  EXPECT_EQ(root.texts, (Texts{"x", "x2", "x11", "x12", "x21", "x22"}));
}

// Two appenders that log into each other's logger, each with a thread of its own: the locks would be taken in both
// orders.
TEST_F(NestedLog, BothWaysBetweenTwoThreadsNeitherHangsNorLoses) {
  constexpr long EVENTS = 2000;
  RecordingAppender below;
  LOGLogger* const b = tree.getLogger("a.b.c");
  b->addAppender(&below);
  b->setAdditivity(0);
  child.onAppend = [&](const std::string& text) { return text[0] == '0' ? b->info(text) : void(); };
  below.onAppend = [&](const std::string& text) { return text[0] == '1' ? logger->info(text) : void(); };
  onThreads(2, [&](int t) {
    for (long n = 1; n <= EVENTS; ++n) logNumber(t == 0 ? logger : b, Way::FAST, t, n);
  });
  for (const Texts* texts : {&child.texts, &below.texts}) expectEachOnceInOrder(*texts, 2, EVENTS);
  b->removeAppender(&below);
}

TEST_F(NestedLog, WithoutEndIsStoppedWithOneLine) {
  child.onAppend = [&](const std::string&) { logger->info("again"); };
  for (const std::size_t expected : {1001u, 2002u}) {
    const InternalLog reported;
    logger->info("first");
    EXPECT_EQ(child.texts.size(), expected);
    EXPECT_EQ(reported.text(), "log4vrk:ERROR Too many log calls from inside a log call, dropping events.\n");
  }
}

TEST_F(NestedLog, TheLibraryIsNotTakenDownOrConfiguredFromInside) {
  const auto refuse = [this] {
    const TempDir dir;
    const std::string document = dir.write("log.xml", "<log4j:configuration threshold='OFF'/>");
    const std::pair<std::function<void()>, std::string> CASES[] = {
        {[&] { tree.shutdown(); }, "LOGHierarchy::shutdown"},
        {[&] { tree.resetConfiguration(); }, "LOGHierarchy::resetConfiguration"},
        {[&] { EXPECT_EQ(LOG4VRKConfigurator::initialize(document.c_str()), 0); }, "LOGDOMConfigurator::doConfigure"},
        {[] { LOG4VRKConfigurator::shutdown(); }, "LOGHierarchy::shutdown"},
    };
    logger->setLevel(LOGLevel::INFO_OBJ);
    LOGManager::init();
    for (const auto& [call, operation] : CASES) {
      const InternalLog reported;
      child.onAppend = [&call = call](const std::string&) { call(); };
      logger->info("outer");
      LOGLogLog::debug("the internal log is open");
      EXPECT_EQ(reported.text(), "log4vrk:ERROR " + operation +
                                     " -- called from inside a log call, ignored\nlog4vrk: the internal log is open\n");
    }
    EXPECT_TRUE(root.closings == 0 && child.closings == 0 && *logger->getLevel() == *LOGLevel::INFO_OBJ);
    EXPECT_EQ(LOGManager::getLoggerRepository()->getThreshold(), LOGLevel::ALL_OBJ);
  };
  EXPECT_EQ(statusInChild(refuse), 0);
}
