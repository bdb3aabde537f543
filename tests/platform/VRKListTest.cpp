#include "tests/support/Tests.h"

TEST(VRKList, DoesWhatAStandardListDoes) {
  std::mt19937 random(1);
  VRKList<int> list;
  std::list<int> model;
  for (int step = 0; step < 5000; ++step) {
    const auto at = static_cast<std::ptrdiff_t>(random() % (model.size() + 1));
    const auto position = std::next(list.begin(), at);
    const auto modelPosition = std::next(model.begin(), at);
    if (random() % 5 < 3) {
      EXPECT_EQ(*list.insert(position, step), *model.insert(modelPosition, step));
    } else if (modelPosition != model.end()) {
      EXPECT_EQ(list.erase(position) == list.end(), model.erase(modelPosition) == model.end());
    }
    ASSERT_TRUE(list.size() == model.size() && std::equal(list.begin(), list.end(), model.begin())) << "step " << step;
  }
  VRKList<int> copy(list);
  const VRKList<int> moved(std::move(list));
  copy.clear();
  copy.push_back(7);
  EXPECT_TRUE(copy.size() == 1 && copy.front() == 7 && std::equal(moved.begin(), moved.end(), model.begin()));
}

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
