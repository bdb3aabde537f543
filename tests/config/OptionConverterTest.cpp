#include "tests/support/Tests.h"

TEST(OptionConverterTest, ReadsALevelWithOrWithoutItsClass) {
  LOGLevel* const fallback = LOGLevel::FATAL_OBJ;
  const struct {
    const char* value;
    LOGLevel* expected;
    const char* logged = nullptr;  // class and level between them
  } CASES[] = {
      {"", fallback},
      {"warn", LOGLevel::WARN_OBJ},
      {"null", nullptr},
      {"WARN#LOGLevel", LOGLevel::WARN_OBJ, "class=[LOGLevel]:pri=[WARN]"},
      {"loud#LOGLevel", LOGLevel::DEBUG_OBJ, "class=[LOGLevel]:pri=[loud]"},
      {"WARN#loglevel", nullptr, "class=[loglevel]:pri=[WARN]"},
      {"a#b#LOGLevel", LOGLevel::DEBUG_OBJ, "class=[LOGLevel]:pri=[a#b]"},
  };
  for (const auto& c : CASES) {
    const InternalLog log;
    EXPECT_EQ(LOGOptionConverter::toLevel(c.value, fallback), c.expected) << c.value;
    EXPECT_EQ(log.text(), c.logged ? std::string("log4vrk: toLevel:") + c.logged + "\n" : "") << c.value;
  }
}
