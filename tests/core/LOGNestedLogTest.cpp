// Log calls that application code makes while the library calls it.

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

class HookFilter : public LOGFilter {
 public:
  explicit HookFilter(std::function<void()> hook) : m_hook(std::move(hook)) {}
  int decide(LOGLoggingEvent*) override {
    m_hook();
    return m_NEUTRAL;
  }

 private:
  std::function<void()> m_hook;
};

/// A tree with one appender at the root, and a second one below at the logger "a".
struct NestedLog : testing::Test {
  NestedLog() {
    tree.getRootLogger()->addAppender(&root);
    a->addAppender(&child);
  }

  const Deadline deadline{60};
  RecordingAppender root{"root"}, child{"child"}, other{"other"};
  Tree tree;
  LOGLogger* const a = tree.getLogger("a");
};

}  // namespace

TEST_F(NestedLog, IsDeliveredOnceTheOuterCallIsOverWhereverItCameFrom) {
  LOGLogger* target = nullptr;
  bool armed = false;
  const auto inner = [&] {
    if (!std::exchange(armed, false)) return;
    target->info("inner 1");
    target->info("inner 2");
  };
  HookMessage message("outer", inner);
  HookFilter filter(inner);
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
  const std::pair<std::function<void()>, bool> PLACES[] = {
      {[&] { a->info(&message); }, true},  // activateOptions()
      {[&] { child.onActivate = nullptr, child.addFilter(&filter), a->info("outer"), child.clearFilters(); }, true},
      {[&] { a->info("outer"); }, true},  // append()
      {[&] { child.onAppend = nullptr, a->info(&message); }, true},
      {[&] { tree.getLogger(I18NString("new.") + ++made, &factory); }, false},
      {[&] { a->addAppender(&other), a->removeAppender(&other); }, false},
      {[&] {
         other.onClose = inner, tree.getLogger("z")->addAppender(&other), tree.getLogger("z")->removeAllAppenders();
       },
       false},
  };
  for (const auto& [outer, logsItself] : PLACES) {
    for (const char* name : {"a", "a.b", "z"}) {
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
      if (text.size() < 3) a->info(I18NString(std::string_view(text + next)));
    }
    if (text == "x1") throw std::runtime_error("after it has logged");
  };
  a->info("x");
  EXPECT_EQ(child.texts, (Texts{"x", "x1", "x2", "x11", "x12", "x21", "x22"}));
  EXPECT_EQ(root.texts, (Texts{"x", "x2", "x11", "x12", "x21", "x22"}));
}

// Two appenders that log into each other's logger, each with a thread of its own: the locks would be taken in both orders.
TEST_F(NestedLog, BothWaysBetweenTwoThreadsNeitherHangsNorLoses) {
  constexpr int EVENTS = 2000;
  LOGLogger* const b = tree.getLogger("a.b");
  b->addAppender(&other);
  b->setAdditivity(0);
  const auto forward = [](LOGLogger* to, char own) {
    return [to, own](const std::string& text) {
      if (text[0] == own) to->info(I18NString(std::string_view("from " + text)));
    };
  };
  child.onAppend = forward(b, 'A');
  other.onAppend = forward(a, 'B');
  const auto run = [&](LOGLogger* logger, const char* name) {
    for (int i = 0; i < EVENTS; ++i) logger->info(I18NString(name) + i);
  };
  std::thread one(run, a, "A"), two(run, b, "B");
  one.join();
  two.join();
  for (const auto& [texts, own, others] : {std::tuple(&child.texts, "A", "from B"), {&other.texts, "B", "from A"}}) {
    int next[2] = {0, 0};
    for (const std::string& text : *texts) {
      const bool isOwn = text[0] == own[0];
      ASSERT_EQ(text, (isOwn ? own : others) + std::to_string(next[isOwn]++));
    }
    EXPECT_TRUE(next[0] == EVENTS && next[1] == EVENTS);
  }
}

TEST_F(NestedLog, WithoutEndIsStoppedWithOneLine) {
  child.onAppend = [&](const std::string&) { a->info("again"); };
  for (const std::size_t expected : {1001u, 2002u}) {
    const InternalLog log;
    a->info("first");
    EXPECT_EQ(child.texts.size(), expected);
    EXPECT_EQ(log.text(), "log4vrk:ERROR Too many log calls from inside a log call, dropping events.\n");
  }
}

TEST_F(NestedLog, AnEventThatCannotBePutOffIsReported) {
  const InternalLog log;
  int copies = 0;
  HookMessage message(
      "inner", [] {},
      [&] {
        if (++copies == 2) throw VRKThrowable("copied once", "Test.cpp", 1);  // it takes a second copy
      });
  child.onAppend = [&](const std::string& text) {
    if (text == "outer") a->info(&message);
  };
  a->info("outer");
  EXPECT_EQ(log.count("VRKThrowable: copied once"), 1);
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
    a->setLevel(LOGLevel::INFO_OBJ);
    LOGManager::init();
    for (const auto& [call, operation] : CASES) {
      const InternalLog log;
      child.onAppend = [&call = call](const std::string&) { call(); };
      a->info("outer");
      LOGLogLog::debug("the internal log is open");
      EXPECT_EQ(log.text(), "log4vrk:ERROR " + operation +
                                " -- called from inside a log call, ignored\nlog4vrk: the internal log is open\n");
    }
    EXPECT_TRUE(root.closings == 0 && child.closings == 0 && *a->getLevel() == *LOGLevel::INFO_OBJ);
    EXPECT_EQ(LOGManager::getLoggerRepository()->getThreshold(), LOGLevel::ALL_OBJ);
  };
  EXPECT_EQ(statusInChild(refuse), 0);
}
