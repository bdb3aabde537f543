#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

class ProgramsLogger : public LOGLogger {
 public:
  explicit ProgramsLogger(const I18NString& name) : LOGLogger(name) { instance("ProgramsLogger"); }
};

}  // namespace

TEST(LOGHierarchy, LinksEachLoggerToItsNearestAncestor) {
  Tree plain;  // a plain prefix decides, and the root's own name counts
  for (const char* name : {"r.x", "root.z", "root.z.w", "r", "root", ""}) plain.getLogger(name);
  for (const char* name : {"r.x", "root.z"}) EXPECT_EQ(plain.exists(name)->getParent(), plain.getRootLogger());
  EXPECT_EQ(plain.exists("root.z.w")->getParent(), plain.exists("root.z"));
  Texts names = {"q",     "q.w", "q.w.e",     "qw",   "qw.e", "q.we", "q.w.e.t.y",
                 "x.y.z", "x",   "x.y.z.q.w", "a..b", ".c",   "a",    "A"};
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    std::shuffle(names.begin(), names.end(), random);
    Tree tree;
    for (const std::string& name : names) tree.getLogger(name.c_str());
    for (std::string name : names) {
      const LOGLogger* const logger = tree.exists(name.c_str());
      LOGLogger* expected = nullptr;
      while (expected == nullptr && name.find('.') != name.npos)
        expected = tree.exists((name.erase(name.rfind('.'))).c_str());
      ASSERT_EQ(logger->getParent(), expected ? expected : tree.getRootLogger()) << logger->getName().toUtf8();
    }
  }
}

TEST(LOGHierarchy, ReportsNewLoggersAndTheLinksThatItChanges) {
  const InternalLog log;
  Tree tree;
  for (const char* name : {"a.b", "a.c", "a", "a"}) tree.getLogger(name);
  EXPECT_EQ(log.text(),
            "log4vrk: Creating new instance of LOGLogger: a.b\nlog4vrk: Creating new instance of LOGLogger: a.c\n"
            "log4vrk: Creating new instance of LOGLogger: a\n"
            "log4vrk: Add logger [root] as parent of [a].\nlog4vrk: Add logger [a] as parent of [a.b].\n"
            "log4vrk: Add logger [root] as parent of [a].\nlog4vrk: Add logger [a] as parent of [a.c].\n");
}

TEST(LOGHierarchy, FindsEveryLoggerAgainWhoeverMadeItAndNoPlaceholders) {
  const Deadline deadline(30);
  Tree tree;
  int asked = 0;
  HookFactory factory([&](const I18NString& name) {
    ++asked;
    tree.getLogger("a");  // a factory may get loggers itself
    return new ProgramsLogger(name);
  });
  LOGLogger* const below = tree.getLogger("a.b.c");
  EXPECT_TRUE(tree.exists("a") == nullptr && tree.exists("a.b") == nullptr);
  LOGLogger* const logger = tree.getLogger("a.b", &factory);
  EXPECT_TRUE(asked == 1 && logger->getRepository() == &tree && logger->instanceOf() == "ProgramsLogger");
  EXPECT_TRUE(below->getParent() == logger && tree.getLogger("a.b.d")->getParent() == logger);
  for (int i = 0; i < 500; ++i) tree.getLogger(I18NString("many.") + i);
  EXPECT_TRUE(tree.getLogger("a.b", &factory) == logger && tree.exists("a.b") == logger && asked == 1);
  EXPECT_EQ(std::unique_ptr<VRKList<LOGLogger*>>(tree.getCurrentLoggers())->size(), 504u);
  HookFactory none([](const I18NString&) { return nullptr; });
  EXPECT_EQ(assertionOf([&] { tree.getLogger("new", nullptr); }), "LOGHierarchy: VRK_ASSERT(factory);");
  EXPECT_EQ(assertionOf([&] { tree.getLogger("new", &none); }), "LOGHierarchy: VRK_ASSERT(logger);");
}

// A program's logger class may log through a new logger, which may lose against one that was made meanwhile.
TEST(LOGHierarchy, AFactoryMayLogThroughTheLoggerThatItMakes) {
  RecordingAppender appender;
  Tree tree;
  tree.getRootLogger()->addAppender(&appender);
  LOGLogger* first = nullptr;
  HookFactory factory([&](const I18NString& name) {
    auto* const made = new ProgramsLogger(name);
    made->setLevel(LOGLevel::DEBUG_OBJ);
    made->info("made");
    first = tree.getLogger(name);
    return made;
  });
  LOGLogger* const got = tree.getLogger("a", &factory);
  got->info("got");
  EXPECT_EQ(got, first);
  EXPECT_EQ(appender.texts.back(), "got");
}

TEST(LOGHierarchy, GivesAllThreadsTheSameLoggers) {
  Tree tree;
  std::vector<std::vector<LOGLogger*>> got(4);
  onThreads(4, [&](int t) {
    for (int i = 0; i < 300; ++i) {
      got[static_cast<std::size_t>(t)].push_back(tree.getLogger(I18NString("s.") + (i % 50) + "." + i));
      got[static_cast<std::size_t>(t)].push_back(tree.getLogger(I18NString("s.") + (i % 50)));
    }
  });
  for (const auto& mine : got) EXPECT_EQ(mine, got[0]);
  for (std::size_t i = 0; i < got[0].size(); i += 2) EXPECT_EQ(got[0][i]->getParent(), got[0][i + 1]);
}

TEST(LOGHierarchy, ItsThresholdGoesBeforeEveryLevel) {
  const InternalLog log;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  logger->setLevel(LOGLevel::ALL_OBJ);
  const std::pair<const char*, LOGLevel*> CASES[] = {{"WARN", LOGLevel::WARN_OBJ}, {"nonsense", LOGLevel::WARN_OBJ},
                                                     {"", LOGLevel::WARN_OBJ},     {"info", LOGLevel::INFO_OBJ},
                                                     {"Off", LOGLevel::OFF_OBJ},   {"all", LOGLevel::ALL_OBJ}};
  EXPECT_EQ(tree.getThreshold(), LOGLevel::ALL_OBJ);
  for (const auto& [text, threshold] : CASES) {
    tree.setThreshold(text);
    tree.setThreshold(static_cast<LOGLevel*>(nullptr));
    EXPECT_EQ(tree.getThreshold(), threshold) << text;
    const bool passes = threshold->toInt() <= 20000;
    EXPECT_TRUE(tree.isDisabled(20000) != passes && logger->isInfoEnabled() == passes) << text;
  }
  EXPECT_EQ(log.count("log4vrk:WARN Could not convert [nonsense to Level."), 1);
}

TEST(LOGHierarchy, WarnsOnceOfAnEventThatFoundNoAppender) {
  const InternalLog log;
  RecordingAppender appender;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a.b");
  tree.getRootLogger()->addAppender(&appender);
  appender.finalize();
  logger->info("an attached appender counts, although it is closed");
  tree.getRootLogger()->removeAppender(&appender);
  for (LOGLogger* each : {logger, logger, tree.getLogger("other")}) each->info("nobody hears");
  EXPECT_EQ(log.count("log4vrk:WARN No appenders could be found for logger (a.b)."), 1);
  EXPECT_EQ(log.count("No appenders"), 1);
  EXPECT_EQ(assertionOf([&] { tree.emitNoAppenderWarning(nullptr); }), "LOGHierarchy: VRK_ASSERT(logger);");
}

TEST(LOGHierarchy, ListenersHearOfEveryAdditionOnceAndInOrder) {
  const InternalLog log;
  RecordingAppender appender("x");
  Texts heard;
  HookListener one(
      [&](auto* logger, auto* added) { heard.push_back((logger->getName() + added->getName()).toUtf8()); });
  HookListener two([&](auto*, auto*) { heard.push_back("two"); });
  HookListener angry([](auto*, auto*) { throw VRKThrowable("angry", VRK_HERE); });
  Tree tree;
  for (HookListener* listener : {&one, &two, &one}) tree.addHierarchyEventListener(listener);
  LOGLogger* const logger = tree.getLogger("a");
  for (int i = 0; i < 2; ++i) logger->addAppender(&appender);
  EXPECT_EQ(heard, (Texts{"ax", "two", "ax", "two"}));
  tree.addHierarchyEventListener(&angry);
  EXPECT_THROW(logger->addAppender(&appender), VRKThrowable);
  EXPECT_TRUE(logger->isAttached(&appender));
  EXPECT_EQ(log.count("log4vrk:ERROR LOGLogger::addAppender -- unable to lock mutex VRKThrowable: angry"), 1);
}

// In a child, because it closes the internal log for good.
TEST(LOGHierarchy, AResetBringsBackTheFirstStateWithEveryAppenderClosed) {
  const auto reset = [] {
    const InternalLog log;
    RecordingAppender root("root"), angry("angry"), last("last");
    LOGDefaultRenderer renderer;
    Tree tree;
    LOGLogger* const logger = tree.getLogger("a");
    tree.getRootLogger()->addAppender(&root);
    for (RecordingAppender* each : {&angry, &last}) logger->addAppender(each);
    tree.setThreshold(LOGLevel::ERROR_OBJ);
    tree.setRenderer("Rendered", &renderer);
    logger->setAdditivity(0);
    for (LOGLogger* each : {tree.getRootLogger(), logger}) each->setLevel(LOGLevel::OFF_OBJ);
    root.onClose = [&] {
      EXPECT_TRUE(*tree.getRootLogger()->getLevel() == *LOGLevel::DEBUG_OBJ &&
                  tree.getThreshold() == LOGLevel::ALL_OBJ);
      EXPECT_TRUE(angry.closings + last.closings == 0 && *logger->getLevel() == *LOGLevel::OFF_OBJ);
    };
    angry.onClose = [&] {
      LOGLogLog::debug("the internal log is still open");
      throw 7;
    };
    tree.resetConfiguration();
    LOGLogLog::debug("it is closed");
    EXPECT_TRUE(root.closings == 1 && last.closings == 1) << "although the one before has raised";
    EXPECT_EQ(log.count("log4vrk:ERROR LOGLogger::closeNestedAppenders -- unable to lock mutex"), 1);
    EXPECT_EQ(log.count("log4vrk:ERROR LOGHierarchy::shutdown -- unknown error"), 1);
    EXPECT_TRUE(log.contains("still open") && !log.contains("it is closed"));
    EXPECT_TRUE(logger->getLevel() == nullptr && logger->getAdditivity() == 1 && logger->getAppender("last") == &last);
    EXPECT_EQ(tree.getRendererMap().getFromListRenderers("Rendered"), LOGRendererMap::getDefaultRenderer());
    root.onClose = angry.onClose = nullptr;
  };
  EXPECT_EQ(statusInChild(reset), 0);
}

TEST(LOGHierarchy, ALoggerForWhichMemoryWasShortIsLinkedAllTheSame) {
  const InternalLog log;
  for (int skipped = 0; skipped < 8; ++skipped) {
    Tree tree;
    LOGLogger* logger = nullptr;
    VRKFault::arm(VRKFault::ALLOCATION, 1, skipped);
    try {
      logger = tree.getLogger("a.b.c");
    } catch (const VRKOutOfMemoryError&) {
    }
    VRKFault::disarm();
    if (logger == nullptr) logger = tree.getLogger("a.b.c");
    EXPECT_EQ(logger->getParent(), tree.getRootLogger()) << skipped;
  }
  EXPECT_TRUE(log.contains("log4vrk:ERROR LOGHierrachy::getLogger ---- Could not put Logger in LOGHashtable"));
}
