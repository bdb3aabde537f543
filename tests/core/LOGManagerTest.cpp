#include <gtest/gtest.h>

#include <string>

#include "log4vrk/core/LOGManager.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

TEST(LOGManager, KeepsItsPromisesInAProcessOfItsOwn) {
  const vrktest::TempDir dir;
  for (const char* what : {"first-lookup", "shutdown-first", "race", "selector", "guards"}) {
    EXPECT_EQ(vrktest::statusOfProgram({LOG4VRK_TEST_PROGRAM_DIR "/manager_probe", what}, dir.path()), 0) << what;
  }
}

TEST(LOGManager, RunsAGuardsOwnCodeWithoutALock) {
  const vrktest::TempDir dir;
  EXPECT_EQ(vrktest::statusOfProgram({LOG4VRK_TEST_PROGRAM_DIR "/manager_probe", "thoughtful-guard"}, dir.path(), 10),
            0);
}

TEST(LOGManager, LogsBeforeMainAndAfterItAndWhileAThreadEnds) {
  const vrktest::TempDir dir;
  const int status =
      vrktest::statusOfProgram({"/bin/sh", "-c", LOG4VRK_TEST_PROGRAM_DIR "/statics_probe > out"}, dir.path());
  EXPECT_EQ(status, 0);
  EXPECT_EQ(dir.read("out"), "static begins\nmain begins\nthread begins\nthread ends\nmain ends\nstatic ends\n");
}
