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
}

TEST(LOGHashtable, DeletesTheKeyOnlyWhenMemoryIsShort) {
  const InternalLog log;
  LOGHashtable table(1), none(0);
  LOGObject value("value");
  const auto key = std::make_unique<LOGLoggerKey>("a");
  EXPECT_TRUE(table.put(key.get(), nullptr) == 0 && table.put(static_cast<LOGLoggerKey*>(nullptr), &value) == 0);
  EXPECT_EQ(none.put(key.get(), &value), 0);
  VRKFault::arm(VRKFault::ALLOCATION);
  EXPECT_EQ(table.put(new LOGLoggerKey("gone"), &value), 0);
  EXPECT_EQ(table.put("a", &value), 1);
  VRKFault::arm(VRKFault::ALLOCATION);
  EXPECT_EQ(table.put(key.get(), &value), 0) << "full, and not doubled";
  VRKFault::disarm();
  table.reSize();
  EXPECT_TRUE(table.capacity() == 2 && table.get("a") == &value && key->getName() == "a");
  EXPECT_EQ(log.count("log4vrk:ERROR LOGHashtable::put ---- Could not allocate memory"), 1);
  EXPECT_EQ(log.count("log4vrk:ERROR LOGHashtable::reSize ---- Could not allocate memory"), 1);
}
