#include "tests/support/Tests.h"

TEST(LOGHashtable, ALaterEntryHidesAnEarlierOneAlsoAfterDoubling) {
  ASSERT_EQ(LOGLoggerKey("Aa").hashCode(), LOGLoggerKey("BB").hashCode());
  EXPECT_EQ(LOGLoggerKey("shop.\xF0\x9F\x98\x80").hashCode(), 2068804443u) << "UTF-16 units, modulo 2^32";
  LOGHashtable table(2);
  LOGObject older("older"), newer("newer"), third("third");
  for (const auto& [name, value] : {std::pair{"Aa", &older}, {"Aa", &newer}, {"BB", &third}, {"x", &third}}) {
    table.put(new LOGLoggerKey(name), value);
  }
  EXPECT_TRUE(table.capacity() == 4 && table.get("Aa") == &newer && table.get("BB") == &third);
  EXPECT_TRUE(table.remove("Aa") == &newer && table.get("Aa") == &older);
  LOGHashtable none(0);
  const auto key = std::make_unique<LOGLoggerKey>("a");
  EXPECT_TRUE(table.put(key.get(), nullptr) == 0 && none.put(key.get(), &third) == 0) << "the key stays the caller's";
}
