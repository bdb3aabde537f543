#include "tests/support/Tests.h"

TEST(VRKListIterator, SurvivesTheElementsItStandsOn) {
  VRKList<int> list;
  for (int i = 1; i <= 1000000; ++i) list.push_back(i);
  VRKListIterator<int> one(list), two(list);
  ++two;
  for (int i = 0; i < 2; ++i) list.erase(std::next(list.begin()));
  EXPECT_EQ(*two, 2) << "unlinked, but still there";
  ++two;
  EXPECT_EQ(*++two, 4);
  while (list.size() > 1) list.pop_front();
  EXPECT_EQ(*one, 1);
  list.clear();
  while (!two.atEnd()) ++two;
  list.push_back(7);
  one.reset();
  EXPECT_EQ(*one, 7);
}
