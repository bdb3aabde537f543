#include "tests/support/Tests.h"

using namespace vrktest;

TEST(LOGManager, IsMadeOnceByThreadsThatMeetAtTheFirstUseAndNotByAShutdown) {
  expectInNewProcess([] {
    LOGManager::shutdown();
    LOG4VRKConfigurator::shutdown();
    EXPECT_FALSE(LOGManager::hasSelector());
    std::vector<LOGLogger*> got[8];  // the root, then children before their parents
    onThreads(8, [&](int t) {
      got[t].push_back(LOGManager::getRootLogger());
      for (int i = 0; i < 300; ++i) {
        const I18NString parent = I18NString("s.") + (i % 50);
        for (const I18NString& name : {parent + "." + i, parent}) got[t].push_back(LOGManager::getLogger(name));
      }
    });
    for (const auto& mine : got) EXPECT_EQ(mine, got[0]);
    for (std::size_t i = 1; i < got[0].size(); i += 2) EXPECT_EQ(got[0][i]->getParent(), got[0][i + 1]);
    EXPECT_TRUE(*got[0][0]->getLevel() == *LOGLevel::DEBUG_OBJ && got[0][2]->getParent() == got[0][0]);
    LOGLogger::shutdown();
    EXPECT_TRUE(LOGLogger::getLogger("s.0") == got[0][2] && LOGLogger::exists("s.0") == got[0][2]);
  });
}

TEST(LOGManager, TakesAnotherSelectorFromWhoeverHasTheGuard) {
  expectInNewProcess([] {
    LOGHierarchy mine(new LOGRootLogger(nullptr)), other(new LOGRootLogger(nullptr));
    LOGDefaultRepositorySelector toMine(&mine), toOther(&other);
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

TEST(LOGManager, LogsBeforeMainAndAfterItAndWhileAThreadEnds) {
  const TempDir dir;
  EXPECT_EQ(std::system(("timeout 30 '" LOG4VRK_TEST_PROGRAM_DIR "/statics_probe' >" + dir.file("out")).c_str()), 0);
  EXPECT_EQ(dir.read("out"), "static begins\nmain begins\nthread begins\nthread ends\nmain ends\nstatic ends\n");
}
