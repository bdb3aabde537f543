#include "tests/support/Tests.h"

TEST(OptionConverterTest, ReadsALevelWithOrWithoutItsClass) {
  LOGLevel* const fallback = LOGLevel::FATAL_OBJ;
  const std::tuple<const char*, LOGLevel*, const char*> CASES[] = {
      {"", fallback, ""},
      {"warn", LOGLevel::WARN_OBJ, ""},
      {"null", nullptr, ""},
      {"WARN#LOGLevel", LOGLevel::WARN_OBJ, "log4vrk: toLevel:class=[LOGLevel]:pri=[WARN]\n"},
      {"loud#LOGLevel", LOGLevel::DEBUG_OBJ, "log4vrk: toLevel:class=[LOGLevel]:pri=[loud]\n"},
      {"WARN#loglevel", nullptr, "log4vrk: toLevel:class=[loglevel]:pri=[WARN]\n"},
      {"a#b#LOGLevel", LOGLevel::DEBUG_OBJ, "log4vrk: toLevel:class=[LOGLevel]:pri=[a#b]\n"},
  };
  for (const auto& [value, level, logged] : CASES) {
    const InternalLog log;
    EXPECT_EQ(LOGOptionConverter::toLevel(value, fallback), level) << value;
    EXPECT_EQ(log.text(), logged) << value;
  }
}
