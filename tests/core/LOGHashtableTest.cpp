#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "log4vrk/core/LOGHashtable.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/VRKFault.h"
#include "tests/support/InternalLog.h"

namespace {

int put(LOGHashtable& table, const I18NString& name, LOGObject& value) {
  return table.put(new LOGLoggerKey(name), &value);
}

}  // namespace

TEST(LOGHashtable, KeepsHundredsOfEntriesApartWhileItDoubles) {
  constexpr int COUNT = 500;
  LOGHashtable table;
  std::vector<LOGObject> values(COUNT);
  const auto name = [](int i) { return I18NString("name.") + i; };
  for (int i = 0; i < COUNT; ++i) {
    EXPECT_EQ(put(table, name(i), values[static_cast<std::size_t>(i)]), i + 1);
    EXPECT_EQ(table.capacity(), i < 200 ? 200 : i < 400 ? 400 : 800) << i;
  }
  for (int i = 0; i < COUNT; i += 2) EXPECT_EQ(table.remove(name(i)), &values[static_cast<std::size_t>(i)]);
  for (int i = 0; i < COUNT; ++i) {
    LOGObject* const value = &values[static_cast<std::size_t>(i)];
    EXPECT_EQ(table.get(name(i)), i % 2 == 0 ? nullptr : value) << i;
    EXPECT_EQ(table.contains(value), i % 2 != 0);
  }
  const std::unique_ptr<VRKList<LOGLoggerKey*>> keys(table.keys());
  const std::unique_ptr<VRKList<LOGObject*>> elements(table.elements());
  auto element = elements->begin();
  for (LOGLoggerKey* key : *keys) EXPECT_EQ(table.get(key), *element++);
  EXPECT_TRUE(table.size() == COUNT / 2 && keys->size() == COUNT / 2 && element == elements->end());
  table.clear();
  EXPECT_TRUE(table.size() == 0 && table.get("name.1") == nullptr && table.remove("name.1") == nullptr);
}

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
