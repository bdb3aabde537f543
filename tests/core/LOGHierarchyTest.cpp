#include "tests/support/Tests.h"

using namespace vrktest;

using LOGHierarchyTest = TreeTest;

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

TEST(LOGHierarchy, FindsEveryLoggerAgainWhoeverMadeItAndNoPlaceholders) {
  Tree tree;
  std::list<LOGLogger*> made;
  HookFactory factory([&](const I18NString& name) {
    tree.getLogger("a");  // a factory may get loggers itself
    return made.emplace_back(new LOGLogger(name));
  });
  LOGLogger* const below = tree.getLogger("a.b.c");
  EXPECT_TRUE(tree.exists("a") == nullptr && tree.exists("a.b") == nullptr);
  LOGLogger* const logger = tree.getLogger("a.b", &factory);
  EXPECT_TRUE(logger == made.front() && logger->getRepository() == &tree);
  EXPECT_TRUE(below->getParent() == logger && tree.getLogger("a.b.d")->getParent() == logger);
  for (int i = 0; i < 500; ++i) tree.getLogger(I18NString("many.") + i);
  EXPECT_TRUE(tree.getLogger("a.b", &factory) == logger && tree.exists("a.b") == logger && made.size() == 1);
  EXPECT_EQ(std::unique_ptr<VRKList<LOGLogger*>>(tree.getCurrentLoggers())->size(), 504u);
  HookFactory none([](const I18NString&) { return nullptr; });
  EXPECT_EQ(assertionOf([&] { tree.getLogger("new", nullptr); }), "LOGHierarchy: VRK_ASSERT(factory);");
  EXPECT_EQ(assertionOf([&] { tree.getLogger("new", &none); }), "LOGHierarchy: VRK_ASSERT(logger);");
}

TEST(LOGHierarchy, FindsAndLinksALoggerByTheNameAskedForWhateverItsFactoryCallsIt) {
  for (const char* name : {"", "x", "a.b.c"}) {
    int made = 0;
    HookFactory factory([&](const I18NString&) { return ++made, new LOGLogger(name); });
    Tree tree;
    LOGLogger* const below = tree.getLogger("a.b", &factory);
    LOGLogger* const above = tree.getLogger("a", &factory);
    EXPECT_TRUE(tree.getLogger("a.b", &factory) == below && tree.exists("a.b") == below && made == 2) << name;
    EXPECT_TRUE(below->getParent() == above && above->getParent() == tree.getRootLogger()) << name;
  }
  EXPECT_EQ(Tree().getRootLogger()->instanceOf(), "LOGRootLogger");
}

// A program's logger class may log through a new logger, which may lose against one that was made meanwhile.
TEST_F(LOGHierarchyTest, AFactoryMayLogThroughTheLoggerThatItMakes) {
  LOGLogger* first = nullptr;
  HookFactory factory([&](const I18NString& name) {
    auto* const made = new LOGLogger(name);
    made->setLevel(LOGLevel::DEBUG_OBJ);
    made->info("made");
    first = tree.getLogger(name);
    return made;
  });
  LOGLogger* const got = tree.getLogger("a", &factory);
  got->info("got");
  EXPECT_EQ(got, first);
  EXPECT_EQ(root.texts.back(), "got");
}

TEST_F(LOGHierarchyTest, ItsThresholdStaysWhereTheTextNamesNoLevel) {
  EXPECT_EQ(tree.getThreshold(), LOGLevel::ALL_OBJ);
  for (const char* text : {"warn", "nonsense", ""}) {
    tree.setThreshold(text);
    tree.setThreshold(static_cast<LOGLevel*>(nullptr));
    EXPECT_TRUE(tree.getThreshold() == LOGLevel::WARN_OBJ && tree.isDisabled(20000) && !tree.isDisabled(30000));
  }
  EXPECT_EQ(log.count("log4vrk:WARN Could not convert [nonsense to Level."), 1);
}

TEST_F(LOGHierarchyTest, WarnsOnceOfAnEventThatFoundNoAppender) {
  root.finalize();
  logger->info("an attached appender counts, although it is closed");
  tree.getRootLogger()->removeAppender(&root);
  for (LOGLogger* each : {logger, logger, tree.getLogger("other")}) each->info("nobody hears");
  EXPECT_EQ(log.count("log4vrk:WARN No appenders could be found for logger (a.b)."), 1);
  EXPECT_EQ(log.count("No appenders"), 1);
  EXPECT_EQ(assertionOf([&] { tree.emitNoAppenderWarning(nullptr); }), "LOGHierarchy: VRK_ASSERT(logger);");
}

TEST_F(LOGHierarchyTest, ListenersHearOfEveryAdditionOnceAndInOrder) {
  Texts heard;
  HookListener one([&](auto* to, auto* added) { heard.push_back((to->getName() + " " + added->getName()).toUtf8()); });
  HookListener two([&](auto*, auto*) { heard.push_back("two"); });
  HookListener angry([](auto*, auto*) { throw VRKThrowable("angry", VRK_HERE); });
  for (HookListener* listener : {&one, &two, &one}) tree.addHierarchyEventListener(listener);
  for (int i = 0; i < 2; ++i) logger->addAppender(&other);
  EXPECT_EQ(heard, (Texts{"a.b other", "two", "a.b other", "two"}));
  logger->removeAppender(&other);
  tree.addHierarchyEventListener(&angry);
  EXPECT_THROW(logger->addAppender(&other), VRKThrowable);
  EXPECT_TRUE(logger->isAttached(&other));
  EXPECT_EQ(log.count("log4vrk:ERROR LOGLogger::addAppender -- unable to lock mutex VRKThrowable: angry"), 1);
}

// In a child, because it closes the internal log for good.
TEST_F(LOGHierarchyTest, AResetBringsBackTheFirstStateWithEveryAppenderClosed) {
  const auto reset = [this] {
    RecordingAppender angry("angry"), last("last");
    LOGDefaultRenderer renderer;
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
  };
  EXPECT_EQ(statusInChild(reset), 0);
}

// Also where the ancestors are too many for a placeholder each, and made later.
TEST(LOGHierarchy, TakesNoLongerForANameThanItIsLong) {
  const Deadline deadline(60);
  const std::string dots(1000000, '.'), half(500000, '.');
  Tree tree;
  LOGLogger* const below = tree.getLogger((dots + "a").c_str());
  LOGLogger* const other = tree.getLogger((dots + "b").c_str());
  EXPECT_EQ(below->getParent(), tree.getRootLogger());
  LOGLogger* const between = tree.getLogger(half.c_str());
  LOGLogger* const nearer = tree.getLogger((half + "..").c_str());
  LOGLogger* const high = tree.getLogger("..");
  for (LOGLogger* each : {below, other}) EXPECT_EQ(each->getParent(), nearer);
  EXPECT_TRUE(nearer->getParent() == between && between->getParent() == high);
  EXPECT_TRUE(high->getParent() == tree.getRootLogger() && tree.exists((dots + "a").c_str()) == below);
}
