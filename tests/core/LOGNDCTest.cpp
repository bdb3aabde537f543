#include <malloc.h>

#include "log4vrk/core/LOGNDC.h"
#include "log4vrk/core/LOGStack.h"
#include "tests/support/Doubles.h"

using vrktest::eventually;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int MANY = 200000;
#else
constexpr int MANY = 10000000;
#endif

void pushAndPop(int times, const I18NString& text = "a text that is too long for a string's own buffer") {
  for (int i = 0; i < times; ++i) {
    LOGNDC::push(text);
    LOGNDC::pop();
  }
}

// Runs `body` again and again on another thread for as long as it lives.
class Meanwhile {
 public:
  explicit Meanwhile(const std::function<void()>& body)
      : m_thread([this, body] {
          for (; !m_done; m_begun = true) body();
        }) {
    EXPECT_TRUE(eventually([&] { return m_begun.load(); }));
  }
  ~Meanwhile() {
    m_done = true;
    m_thread.join();
  }

 private:
  std::atomic<bool> m_begun{false}, m_done{false};
  std::thread m_thread;
};

}  // namespace

TEST(NDCTest, IsAStackOfTextsThatOnlyPopAndRemoveShorten) {
  const struct {
    const char* step;
    std::function<I18NString()> run;
    const char *returned, *all, *last;
    int depth;
  } STEPS[] = {
      {"pop nothing", LOGNDC::pop, "", "", "", 0},
      {"push", [] { return LOGNDC::push("a"), ""; }, "", "a", "a", 1},
      {"push more", [] { return LOGNDC::push("b \u00fc"), ""; }, "", "a b \u00fc", "b \u00fc", 2},
      {"push an empty text", [] { return LOGNDC::push(""), ""; }, "", "a b \u00fc ", "", 3},
      {"clear", [] { return LOGNDC::clear(), ""; }, "", "a b \u00fc ", "", 3},
      {"no depth", [] { return LOGNDC::setMaxDepth(0), ""; }, "", "a b \u00fc ", "", 3},
      {"inherit null", [] { return LOGNDC::inherit(nullptr), ""; }, "", "a b \u00fc ", "", 3},
      {"pop the empty text", LOGNDC::pop, "", "a b \u00fc", "b \u00fc", 2},
      {"pop", LOGNDC::pop, "b \u00fc", "a", "a", 1},
      {"remove", [] { return LOGNDC::remove(), ""; }, "", "", "", 0},
      {"push again", [] { return LOGNDC::push("new"), ""; }, "", "new", "new", 1},
      {"pop the last", LOGNDC::pop, "new", "", "", 0},
      {"pop from an empty one", LOGNDC::pop, "", "", "", 0},
  };
  for (const auto& test : STEPS) {
    SCOPED_TRACE(test.step);
    EXPECT_EQ(test.run(), test.returned);
    EXPECT_EQ(LOGNDC::get(), test.all);
    EXPECT_EQ(LOGNDC::peek(), test.last);
    EXPECT_EQ(LOGNDC::getDepth(), test.depth);
  }
}

TEST(NDCTest, BelongsToTheThreadAndGoesWithIt) {
  LOGNDC::push("mine");
  for (int i = 0; i < 100; ++i) {
    std::thread([] {
      EXPECT_EQ(LOGNDC::get(), "");
      EXPECT_EQ(LOGNDC::cloneStack(), nullptr);
      LOGNDC::push("left behind");
    }).join();
  }
  EXPECT_EQ(LOGNDC::pop(), "mine");
}

TEST(NDCTest, IsDroppedForAllThreadsByLazyRemoveAndByTheEndOfAnObject) {
  for (const std::function<void()>& drop : {std::function<void()>(LOGNDC::lazyRemove), {[] { LOGNDC(); }}}) {
    std::atomic<int> stage{0};
    LOGNDC::push("main");
    std::thread other([&] {
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
  const Meanwhile dropping(LOGNDC::lazyRemove);
  pushAndPop(100000);
}

TEST(NDCTest, IsHandedOnAsACopyThatSharesTheEntriesOrAsAStackOfBoth) {
  LOGNDC::push("a");
  LOGNDC::push("b");
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
    pushAndPop(1000, "x");
  };
  std::thread(change).join();
  EXPECT_EQ(LOGNDC::pop(), "a");
  const Meanwhile changing(change);
  EXPECT_NO_THROW(for (int i = 0; i < 500000; ++i) LOGNDC::get());
  LOGNDC::remove();
}

TEST(NDCTest, LeavesTheHeapAsItWas) {
  pushAndPop(100);
  const std::size_t before = ::mallinfo2().uordblks;
  pushAndPop(MANY);
  EXPECT_LE(::mallinfo2().uordblks, before + 4096);
}

TEST(StackTest, FindsByEqualityFromTheTopAndIsShortenedByPopOnly) {
  LOGObject a("a"), b("b"), sameAsB("b"), c("c");
  LOGStack stack;
  for (LOGObject* object : {&b, &a, &sameAsB}) stack.push(object);
  for (const auto& [object, distance] : {std::pair{&b, 1}, {&a, 2}, {&c, -1}, {static_cast<LOGObject*>(nullptr), -1}}) {
    EXPECT_EQ(stack.search(object), distance);
  }
  for (const int size : {0, -1, 1, 9}) stack.setSize(size);
  const std::unique_ptr<LOGStack> copy(stack.clone());
  for (LOGObject* object : {&sameAsB, &a, &b}) EXPECT_EQ(stack.pop(), object);
  EXPECT_EQ(stack.pop(), nullptr);
  EXPECT_EQ(copy->peek(), &sameAsB);
}
