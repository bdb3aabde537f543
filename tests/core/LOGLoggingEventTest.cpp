#include <ctime>

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
  EXPECT_TRUE(nanos >= 0 && nanos < 1000000000);
  original->setLogger(tree.getLogger("other"));
  LOGLoggingEvent copy(*original), assigned;
  assigned = *original;
  assigned = *&assigned;
  EXPECT_NE(copy.getLocationInformation(), original->getLocationInformation());
  original.reset();
  for (LOGLoggingEvent* event : {&copy, &assigned}) {
    EXPECT_TRUE(textOf(*event) == "text" && event->getLoggerName() == "a.b" && event->getLevel() == LOGLevel::WARN_OBJ);
    EXPECT_TRUE(event->getTimeStamp() == seconds && event->getTimeStampNanos() == nanos);
    const LOGLocationInfo& where = *event->getLocationInformation();
    EXPECT_TRUE(where.getFileName() == "?" && where.getLineNumber() == "?" && where.getFullInfo().isEmpty());
  }
  EXPECT_THROW(LOGLoggingEvent("Fqn", nullptr, LOGLevel::WARN_OBJ, &message), VRKAssertError);
}

TEST(LOGLoggingEvent, TakesTheThreadsNameFromItsFirstReader) {
  LOGLogger logger("a");
  LOGLoggingEvent event("", &logger, LOGLevel::INFO_OBJ, nullptr);
  long reader = 0;
  std::thread([&] {
    reader = VRKThread::currentThreadId();
    event.getThreadName();
  }).join();
  LOGLoggingEvent copy(event), untouched;
  EXPECT_EQ(event.getThreadName(), I18NString() + reader);
  EXPECT_EQ(copy.getThreadName(), I18NString() + reader);
  EXPECT_EQ(untouched.getThreadName(), I18NString() + VRKThread::currentThreadId());
}

TEST(LOGLoggingEvent, RendersToNothingWithoutMessageLoggerOrRepository) {
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  LOGLogger alone("alone");
  LOGObject message("text");
  const struct {
    LOGLogger* logger;
    LOGObject* message;
    const char* expected;
  } CASES[] = {{logger, &message, "text"},
               {logger, nullptr, "(null)"},
               {&alone, &message, "(null)"},
               {nullptr, &message, "(null)"}};
  for (const auto& c : CASES) {
    LOGLoggingEvent event("", logger, LOGLevel::INFO_OBJ, c.message);
    event.setLogger(c.logger);
    EXPECT_EQ(textOf(event), c.expected);
    event.setRenderedMessage("set");
    EXPECT_EQ(textOf(event), "set") << "a text that was set goes before";
  }
}
