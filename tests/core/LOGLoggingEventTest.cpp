#include <gtest/gtest.h>

#include <ctime>
#include <memory>
#include <string>
#include <thread>

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "tests/support/Doubles.h"

namespace {

using vrktest::textOf;
using vrktest::Tree;

std::string ownThreadId() { return std::to_string(VRKThread::currentThreadId()); }

}  // namespace

TEST(LOGLoggingEvent, KeepsWhatWasLoggedAndWhen) {
  LOGLogger logger("a.b");
  LOGObject message("text");
  const std::time_t before = std::time(nullptr);
  LOGLoggingEvent event("Fqn", &logger, LOGLevel::WARN_OBJ, &message);
  const std::time_t after = std::time(nullptr);
  // The coarse clock behind time() may lag by a tick.
  EXPECT_TRUE(event.getTimeStamp() >= before && event.getTimeStamp() <= after + 1);
  EXPECT_TRUE(event.getTimeStampNanos() >= 0 && event.getTimeStampNanos() < 1000000000);
  EXPECT_LE(LOGLoggingEvent::getStartTime(), event.getTimeStamp());
  EXPECT_NE(event.getMessage(), &message);
  EXPECT_TRUE(*event.getMessage() == message);
  LOGLogger other("other");
  event.setLogger(&other);
  EXPECT_EQ(event.getLoggerName(), "a.b");
  EXPECT_EQ(event.getFQNOfLoggerClass(), "Fqn");
  EXPECT_TRUE(event.getThrowableStrRep().isEmpty() && event.getMDC("key") == nullptr);

  const LOGLocationInfo& location = *event.getLocationInformation();
  for (const I18NString* field :
       {&location.getClassName(), &location.getFileName(), &location.getLineNumber(), &location.getMethodName()}) {
    EXPECT_EQ(*field, "?");
  }
  EXPECT_TRUE(location.getFullInfo().isEmpty());
  try {
    const LOGLoggingEvent none("Fqn", nullptr, LOGLevel::WARN_OBJ, &message);
    FAIL();
  } catch (const VRKAssertError& error) {
    EXPECT_EQ(error.getText(), "VRK_ASSERT(m_logger);");
    EXPECT_EQ(error.getSource(), "LOGLoggingEvent");
  }
}

TEST(LOGLoggingEvent, TakesTheThreadsNameFromItsFirstReader) {
  LOGLogger logger("a");
  LOGLoggingEvent event("", &logger, LOGLevel::INFO_OBJ, nullptr);
  std::string first;
  std::thread([&] {
    first = ownThreadId();
    EXPECT_EQ(event.getThreadName(), I18NString(std::string_view(first)));
  }).join();
  EXPECT_EQ(event.getThreadName().toUtf8(), first);
  LOGLoggingEvent copy(event), assigned;
  assigned = event;
  EXPECT_EQ(copy.getThreadName().toUtf8(), first);
  EXPECT_EQ(assigned.getThreadName().toUtf8(), first);
  EXPECT_EQ(LOGLoggingEvent().getThreadName().toUtf8(), ownThreadId());
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
    event.setRenderedMessage("");
    EXPECT_EQ(textOf(event), c.expected);
  }
}

TEST(LOGLoggingEvent, CopiesOutliveTheirOriginal) {
  Tree tree;
  LOGObject message("text");
  auto original = std::make_unique<LOGLoggingEvent>("Fqn", tree.getLogger("a"), LOGLevel::INFO_OBJ, &message);
  original->setThrowableStrRep("throwable");
  LOGLoggingEvent copy(*original), assigned("", tree.getLogger("b"), LOGLevel::OFF_OBJ, &message);
  assigned = *original;
  assigned = *&assigned;
  const std::int64_t seconds = original->getTimeStamp();
  const std::int32_t nanos = original->getTimeStampNanos();
  EXPECT_NE(copy.getMessage(), original->getMessage());
  EXPECT_NE(copy.getLocationInformation(), original->getLocationInformation());
  original.reset();
  for (LOGLoggingEvent* event : {&copy, &assigned}) {
    EXPECT_EQ(textOf(*event), "text");
    EXPECT_TRUE(event->getLoggerName() == "a" && event->getFQNOfLoggerClass() == "Fqn" &&
                event->getLevel() == LOGLevel::INFO_OBJ);
    EXPECT_TRUE(event->getTimeStamp() == seconds && event->getTimeStampNanos() == nanos);
    EXPECT_EQ(event->getThrowableStrRep(), "throwable");
  }
}
