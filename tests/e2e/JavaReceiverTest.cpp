// What the example of the local UDP appender sends is what Java's object streams read.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

using namespace vrktest;

namespace {

// A program whose output is read line by line. It ends by itself, and at the latest after a minute.
class Output {
 public:
  explicit Output(const std::string& command) : m_pipe(::popen(("exec timeout 60 " + command).c_str(), "re")) {}
  ~Output() { ::pclose(m_pipe); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  std::string line() {
    char buffer[1000];
    std::string text = std::fgets(buffer, sizeof buffer, m_pipe) != nullptr ? buffer : "(end)\n";
    text.pop_back();
    return text;
  }

 private:
  std::FILE* m_pipe;
};

TEST(JavaReceiverTest, JavaReadsTheObjectsOfTheExample) {
  if (std::system("java --list-modules 2>/dev/null | grep -q jdk.compiler") != 0) {
    GTEST_SKIP() << "there is no Java that runs source files (Debian package default-jdk-headless)";
  }
  const Deadline deadline(100);
  const TempDir dir;
  const std::string examples = LOG4VRK_SOURCE_DIR "/examples/datagrams/";
  Output receiver("java " + examples + "Receiver.java 0 4 2>&1");
  const std::string listening = "listening on ", first = receiver.line();
  ASSERT_EQ(0u, first.find(listening)) << first;

  const std::string document = dir.file("sales.xml");
  const std::string log = "sed 's/9362/" + first.substr(listening.size()) + "/' " + examples + "sales.xml >" +
                          document + " && timeout 60 " LOG4VRK_BINARY_DIR "/examples/datagrams/sales " + document;
  ASSERT_EQ(0, std::system(log.c_str()));
  for (const char* expected : {"2 x tea for 798 cents", "1 x caf\u00e9 cr\u00e8me for 450 cents", "0 x  for -1 cents",
                               "3 x \U0001F375 matcha for 5000000000 cents"}) {
    EXPECT_EQ("shop.till: " + std::string(expected), receiver.line());
  }
}

}  // namespace
