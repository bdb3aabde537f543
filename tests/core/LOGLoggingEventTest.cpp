#include "tests/support/Tests.h"

using namespace vrktest;

// A program may keep a copy of an event for as long as it likes: longer than the logger, the level and the thread live.
TEST(LOGLoggingEvent, KeepsWhatWasLoggedAndWhenAlsoInCopies) {
  struct : LOGAppenderSkeleton {
    void append(LOGLoggingEvent* event) override {
      event->getThreadName();
      copies.emplace_back(*event);
      copies.emplace_back() = *event;
      copies.back() = *&copies.back();
    }
    std::list<LOGLoggingEvent> copies;
  } capturing;
  std::string expected;
  const std::time_t before = std::time(nullptr);
  {
    LOGLevel passing(25000, "PASSING", 5);
    Tree gone;
    LOGLogger* const named = gone.getLogger("a.logger.that.goes");
    named->addAppender(&capturing);
    std::thread([&] {
      expected = std::to_string(VRKThread::currentThreadId()) + " PASSING a.logger.that.goes text";
      named->setLevel(&passing);
      HookMessage object("text");
      named->log(named->getLevel(), I18NString("text"));
      named->log(named->getLevel(), &object);
    }).join();
    std::thread([] { LOGManager::getRootLogger()->isDebugEnabled(); }).join();  // takes over what the first has left
  }
  LOGPatternLayout pattern("%t %p %c %m");
  EXPECT_EQ(capturing.copies.size(), 4u);
  LOGLoggingEvent& first = capturing.copies.front();
  for (LOGLoggingEvent& copy : capturing.copies) {
    EXPECT_EQ(pattern.format(&copy).toUtf8(), expected);
    // The coarse clock behind time() may lag by a tick.
    const std::int64_t seconds = copy.getTimeStamp();
    EXPECT_TRUE(seconds >= before && seconds <= std::time(nullptr) + 1 && seconds >= LOGLoggingEvent::getStartTime());
    EXPECT_EQ(copy.getLocationInformation()->getFileName(), "?");
    EXPECT_TRUE(&copy == &first || copy.getLocationInformation() != first.getLocationInformation());
  }
  const auto next = std::next(capturing.copies.begin());
  EXPECT_TRUE(next->getTimeStamp() == first.getTimeStamp() && next->getTimeStampNanos() == first.getTimeStampNanos());
  EXPECT_EQ(LOGLoggingEvent().getThreadName(), I18NString() + VRKThread::currentThreadId());
  EXPECT_THROW(LOGLoggingEvent("Fqn", nullptr, LOGLevel::WARN_OBJ, nullptr), VRKAssertError);
}

TEST(LOGLoggingEvent, GivesItsTextAsAValueToo) {
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a.b");
  HookMessage object("object \u20ac");
  LOGLoggingEvent rendered("Fqn", logger, LOGLevel::WARN_OBJ, &object),
      none("Fqn", logger, LOGLevel::WARN_OBJ, nullptr);
  EXPECT_EQ(rendered.getRenderedMessageUtf8(), "object \u20ac");
  rendered.setRenderedMessage("set");
  EXPECT_EQ(rendered.getRenderedMessageUtf8(), "set");
  EXPECT_EQ(none.getRenderedMessageUtf8(), "");
  EXPECT_EQ(LOGLoggingEvent().getRenderedMessageUtf8(), "");
}
