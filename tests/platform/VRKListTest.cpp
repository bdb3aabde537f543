#include <gtest/gtest.h>

#include <iterator>
#include <list>
#include <random>
#include <utility>

#include "log4vrk/platform/VRKList.h"

TEST(VRKList, DoesWhatAStandardListDoes) {
  std::mt19937 random(1);
  VRKList<int> list;
  std::list<int> model;
  for (int step = 0; step < 5000; ++step) {
    const auto at = static_cast<std::ptrdiff_t>(random() % (model.size() + 1));
    const auto position = std::next(list.begin(), at);
    const auto modelPosition = std::next(model.begin(), at);
    if (step % 500 == 499) {
      list.clear();
      model.clear();
    } else if (random() % 5 < 3) {
      EXPECT_EQ(*list.insert(position, step), *model.insert(modelPosition, step));
    } else if (modelPosition != model.end()) {
      EXPECT_EQ(list.erase(position) == list.end(), model.erase(modelPosition) == model.end());
    }
    ASSERT_EQ(list.size(), model.size());
    ASSERT_EQ(std::list<int>(list.begin(), list.end()), model) << "step " << step;
  }
  VRKList<int> copy(list);
  copy.push_front(-1);
  list = copy;
  const VRKList<int> moved(std::move(copy));
  model.push_front(-1);
  EXPECT_EQ(std::list<int>(list.begin(), list.end()), model);
  EXPECT_EQ(std::list<int>(moved.begin(), moved.end()), model);
  EXPECT_TRUE(copy.empty() && copy.begin() == copy.end());
}

TEST(VRKListIterator, SurvivesTheElementsItStandsOn) {
  VRKList<int> list;
  for (int i = 1; i <= 5; ++i) list.push_back(i);
  VRKListIterator<int> one(list), two(list);
  ++two;
  list.erase(std::next(list.begin()));
  list.erase(std::next(list.begin()));
  list.pop_front();
  EXPECT_TRUE(*one == 1 && *two == 2) << "unlinked, but still there";
  ++two;
  EXPECT_EQ(*++two, 4);
  list.clear();
  EXPECT_TRUE((++two).atEnd());
  list.push_back(7);
  one.reset();
  EXPECT_EQ(*one, 7);
  EXPECT_TRUE(VRKListIterator<int>().atEnd());
}

TEST(VRKListIterator, MayBeLeftBehindByAMillionErasures) {
  VRKList<int> list;
  for (int i = 0; i < 1000000; ++i) list.push_back(i);
  const VRKListIterator<int> first(list);
  while (!list.empty()) list.pop_front();
  EXPECT_EQ(*first, 0);
}
