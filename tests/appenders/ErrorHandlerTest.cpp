#include "tests/appenders/AppenderFixture.h"

namespace {

/// Counts how many of its kind are alive.
struct CountedHandler : LOGErrorHandler {
  explicit CountedHandler(int& counter) : alive(counter) { ++alive; }
  ~CountedHandler() override { --alive; }
  int& alive;
};

}  // namespace

TEST(ErrorHandlerTest, OnlyTheFirstReportOfAnyFormIsWritten) {
  VRKThrowable cause("disk full", VRK_HERE);
  for (const bool withCause : {false, true}) {
    const InternalLog log;
    LOGOnlyOnceErrorHandler handler;
    withCause ? handler.error("first", cause, 1) : handler.error("first");
    handler.error("later");
    handler.error("later", cause, 1);
    handler.error("later", cause, 1, nullptr);
    EXPECT_EQ(log.text(), "log4vrk:ERROR first" + (withCause ? " " + std::string(cause.what()) : "") + "\n");
  }
}

TEST(ErrorHandlerTest, AReplacedHandlerIsFreedExceptByWriterAppenders) {
  int alive = 0;
  CountedHandler ours(alive);
  {
    LOGAppenderSkeleton plain;
    plain.setErrorHandler(new CountedHandler(alive));
    plain.setErrorHandler(new CountedHandler(alive));
    plain.setErrorHandler(nullptr);
    EXPECT_EQ(alive, 2);
    LOGFileAppender writer;
    writer.setErrorHandler(&ours);
    writer.setErrorHandler(new CountedHandler(alive));
    EXPECT_EQ(alive, 3);
  }
  EXPECT_EQ(alive, 1) << "the last ones go with their appenders";
}
