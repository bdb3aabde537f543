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
  for (int first : {0, 1, 2}) {
    const InternalLog log;
    LOGOnlyOnceErrorHandler handler;
    for (int i = 0; i < 3; ++i) {
      const char* const text = i == 0 ? "first" : "later";
      const int form = (first + i) % 3;
      if (form == 0) handler.error(text);
      if (form == 1) handler.error(text, cause, 1);
      if (form == 2) handler.error(text, cause, 1, nullptr);
    }
    EXPECT_EQ(log.text(), "log4vrk:ERROR first" + (first == 0 ? "" : std::string(" ") + cause.what()) + "\n");
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
