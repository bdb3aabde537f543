#include "tests/support/Tests.h"

namespace {

int put(LOGHashtable& table, const I18NString& name, LOGObject& value) {
  return table.put(new LOGLoggerKey(name), &value);
}

}  // namespace

TEST(LOGHashtable, ALaterEntryHidesAnEarlierOneAlsoAfterDoubling) {
  ASSERT_TRUE(LOGLoggerKey("Aa").hashCode() == LOGLoggerKey("BB").hashCode() &&
              LOGLoggerKey("ab").hashCode() == 97 * 31 + 98);
  EXPECT_EQ(LOGLoggerKey("shop.\xF0\x9F\x98\x80").hashCode(), 2068804443u) << "UTF-16 units, modulo 2^32";
  LOGHashtable table(2);
  LOGObject older("older"), newer("newer"), collides("collides"), third("third");
  put(table, "Aa", older);
  put(table, "Aa", newer);
  put(table, "BB", collides);
  EXPECT_EQ(put(table, "x", third), 4);
  EXPECT_TRUE(table.capacity() == 4 && table.get("Aa") == &newer && table.get("BB") == &collides);
  EXPECT_TRUE(table.replace("Aa", &third) && !table.replace("missing", &third));
  EXPECT_TRUE(table.remove("Aa") == &third && table.get("Aa") == &older);
}

TEST(LOGHashtable, TakesNothingWithoutBucketsKeyValueOrMemory) {
  const InternalLog log;
  LOGObject value;
  for (const long capacity : {0L, -5L}) {
    LOGHashtable table(capacity, 0.75f);
    EXPECT_TRUE(put(table, "name", value) == 0 && table.get("name") == nullptr && table.remove("name") == nullptr);
  }
  LOGHashtable table(1);
  EXPECT_TRUE(table.put(nullptr, &value) == 0 && table.put(new LOGLoggerKey("name"), nullptr) == 0);
  VRKFault::arm(VRKFault::ALLOCATION);
  EXPECT_EQ(put(table, "one", value), 0);
  EXPECT_EQ(log.text(), "log4vrk:ERROR LOGHashtable::put ---- Could not allocate memory\n");
  EXPECT_EQ(put(table, "one", value), 1);
  VRKFault::arm(VRKFault::ALLOCATION);
  EXPECT_EQ(put(table, "two", value), 0);
  VRKFault::disarm();
  EXPECT_EQ(log.count("log4vrk:ERROR LOGHashtable::reSize ---- Could not allocate memory"), 1);
  EXPECT_TRUE(table.get("one") == &value && put(table, "two", value) == 2);
}
