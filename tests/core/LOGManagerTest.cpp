#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

struct LOGManagerTest : testing::Test {
  LOGHierarchy mine{new LOGRootLogger(nullptr)}, other{new LOGRootLogger(nullptr)};
  LOGDefaultRepositorySelector toMine{&mine}, toOther{&other};
};

}  // namespace

TEST_F(LOGManagerTest, MayBeShutDownFirst) {
  expectInNewProcess([] {
    LOGManager::shutdown();
    LOG4VRKConfigurator::shutdown();
    EXPECT_FALSE(LOGManager::hasSelector());
  });
}

TEST_F(LOGManagerTest, IsMadeOnceByThreadsThatMeetAtTheFirstUse) {
  expectInNewProcess([] {
    std::vector<std::pair<LOGLogger*, LOGLogger*>> got(8);  // the logger and the root
    onThreads(8, [&](int t) {
      got[static_cast<std::size_t>(t)] = {LOGManager::getLogger("x"), LOGManager::getRootLogger()};
    });
    for (const auto& each : got) EXPECT_EQ(each, got[0]);
    const auto [logger, root] = got[0];
    EXPECT_TRUE(*root->getLevel() == *LOGLevel::DEBUG_OBJ && logger->getParent() == root);
    LOGLogger::shutdown();
    EXPECT_TRUE(LOGLogger::getLogger("x") == logger && LOGLogger::exists("x") == logger);
  });
}

TEST_F(LOGManagerTest, TakesAnotherSelectorFromWhoeverHasTheGuard) {
  expectInNewProcess([this] {
    const auto current = [] { return LOGManager::getLoggerRepository(); };
    LOGObject stranger("stranger"), same("guard");
    EXPECT_THROW(LOGManager::setRepositorySelector(&toMine, nullptr), VRKAssertError);
    LOGManager::setRepositorySelector(nullptr, &stranger);  // neither is kept
    EXPECT_FALSE(LOGManager::hasSelector());
    LOGManager::setRepositorySelector(&toMine, std::make_unique<LOGObject>("guard").get());
    EXPECT_TRUE(current() == &mine && LOGManager::getLogger("a")->getRepository() == &mine);
    LOGManager::setRepositorySelector(&toOther, &stranger);
    LOGManager::setRepositorySelector(nullptr, &same);
    EXPECT_EQ(current(), &mine);
    LOGManager::setRepositorySelector(&toOther, &same);
    EXPECT_EQ(current(), &other);
  });
}

TEST_F(LOGManagerTest, LogsBeforeMainAndAfterItAndWhileAThreadEnds) {
  const TempDir dir;
  EXPECT_EQ(std::system(("timeout 30 " LOG4VRK_TEST_PROGRAM_DIR "/statics_probe >" + dir.file("out")).c_str()), 0);
  EXPECT_EQ(dir.read("out"), "static begins\nmain begins\nthread begins\nthread ends\nmain ends\nstatic ends\n");
}
