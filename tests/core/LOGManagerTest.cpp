#include "tests/support/Tests.h"

using namespace vrktest;

TEST(LOGManager, KeepsItsPromisesInAProcessOfItsOwn) {
  for (const std::string what : {"shutdown-first", "race", "selector", "guards"}) {
    EXPECT_EQ(std::system(("timeout 30 " LOG4VRK_TEST_PROGRAM_DIR "/manager_probe " + what).c_str()), 0) << what;
  }
}

TEST(LOGManager, LogsBeforeMainAndAfterItAndWhileAThreadEnds) {
  const TempDir dir;
  EXPECT_EQ(std::system(("timeout 30 " LOG4VRK_TEST_PROGRAM_DIR "/statics_probe >" + dir.file("out")).c_str()), 0);
  EXPECT_EQ(dir.read("out"), "static begins\nmain begins\nthread begins\nthread ends\nmain ends\nstatic ends\n");
}
