// That Java's object streams read what the example of the local UDP appender sends.

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

TEST(JavaReceiverTest, JavaReadsTheObjectsOfTheExample) {
  if (std::system("java --list-modules 2>/dev/null | grep -q jdk.compiler") != 0) {
    GTEST_SKIP() << "there is no Java that runs source files (Debian package default-jdk-headless)";
  }
  const Deadline deadline(100);
  const TempDir dir;
  const std::string examples = LOG4VRK_SOURCE_DIR "/examples/datagrams/";
  const auto lines = [&] { return linesOf(dir.file("out")); };
  const pid_t receiver = startProgram(
      {"/bin/sh", "-c", "exec timeout 60 java '" + examples + "Receiver.java' 0 4 >" + dir.file("out") + " 2>&1"});
  ASSERT_TRUE(eventually([&] { return dir.read("out").find('\n') != std::string::npos; }, 60));
  const std::string listening = "listening on ", first = lines()[0];
  ASSERT_EQ(0u, first.find(listening)) << first;

  const std::string document = dir.file("sales.xml");
  const std::string log = "sed 's/9362/" + first.substr(listening.size()) + "/' '" + examples + "sales.xml' >" +
                          document + " && timeout 60 '" LOG4VRK_BINARY_DIR "/examples/datagrams/sales' " + document;
  ASSERT_EQ(0, std::system(log.c_str()));
  EXPECT_EQ(0, statusOf(receiver));
  EXPECT_EQ((Texts{first, "shop.till: 2 x tea for 798 cents", "shop.till: 1 x caf\u00e9 cr\u00e8me for 450 cents",
                   "shop.till: 0 x  for -1 cents", "shop.till: 3 x \U0001F375 matcha for 5000000000 cents"}),
            lines());
}

}  // namespace
