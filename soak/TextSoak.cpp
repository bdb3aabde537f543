// Messages of every kind of UTF-16, more than a test has.

#include "soak/Soak.h"
#include "tests/support/RandomTexts.h"

using namespace vrktest;

// Python and jq read in each line what was logged.
TEST(Soak, json) {
  const long count = scaled(1000000);
  expectParsersToRead(count);
  if (testing::Test::IsSkipped()) return;
  report(text(count, " messages, two parsers"));
}

// Each is one line, which says what was logged.
TEST(Soak, lines) {
  const long count = scaled(1000000);
  expectOneLineEach(count);
  report(text(count, " messages, each a line"));
}
