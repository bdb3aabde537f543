#include "tests/support/Tests.h"

using namespace vrktest;

TEST(LOGLoggingEvent, KeepsWhatWasLoggedAndWhenAlsoInCopies) {
  Tree tree;
  LOGObject message("text");
  const std::time_t before = std::time(nullptr);
  auto original = std::make_unique<LOGLoggingEvent>("Fqn", tree.getLogger("a.b"), LOGLevel::WARN_OBJ, &message);
  const std::int64_t seconds = original->getTimeStamp();
  const std::int32_t nanos = original->getTimeStampNanos();
  // The coarse clock behind time() may lag by a tick.
  EXPECT_TRUE(seconds >= before && seconds <= std::time(nullptr) + 1 && seconds >= LOGLoggingEvent::getStartTime());
  original->setLogger(tree.getLogger("other"));
  long reader = 0;  // the thread's name is that of its first reader
  std::thread([&] {
    reader = VRKThread::currentThreadId();
    original->getThreadName();
  }).join();
  LOGLoggingEvent copy(*original), assigned, untouched;
  assigned = *original;
  assigned = *&assigned;
  EXPECT_NE(copy.getLocationInformation(), original->getLocationInformation());
  original.reset();
  for (LOGLoggingEvent* event : {&copy, &assigned}) {
    EXPECT_TRUE(textOf(*event) == "text" && event->getLoggerName() == "a.b" && event->getLevel() == LOGLevel::WARN_OBJ);
    EXPECT_TRUE(event->getTimeStamp() == seconds && event->getTimeStampNanos() == nanos);
    EXPECT_EQ(event->getThreadName(), I18NString() + reader);
    EXPECT_EQ(event->getLocationInformation()->getFileName(), "?");
  }
  EXPECT_EQ(untouched.getThreadName(), I18NString() + VRKThread::currentThreadId());
  EXPECT_THROW(LOGLoggingEvent("Fqn", nullptr, LOGLevel::WARN_OBJ, &message), VRKAssertError);
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
