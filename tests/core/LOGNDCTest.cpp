#include "tests/support/Tests.h"

using namespace vrktest;

TEST(NDCTest, IsAStackOfTextsThatOnlyPopAndRemoveShorten) {
  const auto state = [] { return (LOGNDC::get() + "|" + LOGNDC::peek() + "|" + LOGNDC::getDepth()).toUtf8(); };
  EXPECT_EQ(LOGNDC::pop(), "");
  for (const char* text : {"a", "b \u00fc", ""}) LOGNDC::push(text);
  LOGNDC::clear();
  LOGNDC::setMaxDepth(0);
  LOGNDC::inherit(nullptr);
  EXPECT_EQ(state(), "a b \u00fc ||3");
  for (const char* text : {"", "b \u00fc"}) EXPECT_EQ(LOGNDC::pop(), text);
  EXPECT_EQ(state(), "a|a|1");
  LOGNDC::remove();
  EXPECT_EQ(state(), "||0");
}

TEST(NDCTest, IsDroppedForAllThreadsByLazyRemoveAndByTheEndOfAnObject) {
  for (const std::function<void()>& drop : {std::function<void()>(LOGNDC::lazyRemove), {[] { LOGNDC(); }}}) {
    std::atomic<int> stage{0};
    LOGNDC::push("main");
    std::thread other([&] {
      EXPECT_TRUE(LOGNDC::get().isEmpty() && LOGNDC::cloneStack() == nullptr) << "a thread begins without one";
      LOGNDC::push("other");
      stage = 1;
      EXPECT_TRUE(eventually([&] { return stage == 2; }));
      EXPECT_EQ(LOGNDC::getDepth(), 0);
      LOGNDC::push("fresh");
      EXPECT_EQ(LOGNDC::get(), "fresh");
    });
    EXPECT_TRUE(eventually([&] { return stage == 1; }));
    drop();
    stage = 2;
    other.join();
    EXPECT_EQ(LOGNDC::get(), "");
  }
  const Meanwhile dropping({LOGNDC::lazyRemove});
  for (int i = 0; i < 100000; ++i) {
    LOGNDC::push("a text that is too long for a string's own buffer");
    LOGNDC::pop();
  }
}

TEST(NDCTest, IsHandedOnAsACopyThatSharesTheEntriesOrAsAStackOfBoth) {
  for (const char* text : {"a", "b"}) LOGNDC::push(text);
  LOGStack* const copy = LOGNDC::cloneStack();
  LOGNDC::pop();
  std::thread([&] {
    LOGNDC::push("replaced");
    LOGNDC::inherit(copy);
    EXPECT_EQ(LOGNDC::get(), "a b");
    for (const char* text : {"b", "a"}) EXPECT_EQ(LOGNDC::pop(), text);
    LOGNDC::remove();
    EXPECT_EQ(LOGNDC::get(), "") << "what was replaced does not come back";
  }).join();
  LOGStack* const shared = LOGNDC::cloneStack();
  for (int i = 0; i < 2; ++i) LOGNDC::inherit(shared);
  const auto change = [&] {
    LOGNDC::inherit(shared);
    for (int i = 0; i < 1000; ++i) {
      LOGNDC::push("x");
      LOGNDC::pop();
    }
  };
  std::thread(change).join();
  EXPECT_EQ(LOGNDC::pop(), "a");
  const Meanwhile changing({change});
  EXPECT_NO_THROW(for (int i = 0; i < 500000; ++i) LOGNDC::get());
  LOGNDC::remove();
}

TEST(StackTest, FindsByEqualityFromTheTopAndIsShortenedByPopOnly) {
  LOGObject a("a"), b("b"), sameAsB("b"), c("c");
  LOGStack stack;
  for (LOGObject* object : {&b, &a, &sameAsB}) stack.push(object);
  EXPECT_TRUE(stack.search(&b) == 1 && stack.search(&a) == 2 && stack.search(&c) == -1 && stack.search(nullptr) == -1);
  for (const int size : {0, -1, 9}) stack.setSize(size);
  const std::unique_ptr<LOGStack> copy(stack.clone());
  for (LOGObject* object : {&sameAsB, &a, &b}) EXPECT_EQ(stack.pop(), object);
  EXPECT_TRUE(stack.pop() == nullptr && copy->peek() == &sameAsB);
}
