#include "tests/support/Tests.h"

TEST(VRKThrowable, TellsItsClassTextAndWayOnOneLine) {
  const std::string WAY = ", at Low:5, VRK_RETHROW dir.d/Upper:20";
  const std::pair<std::function<void()>, std::string> CASES[] = {
      {[] { throw VRKThrowable("two\nlines\r\n", "Low.cpp", 5); }, "VRKThrowable: two lines  " + WAY},
      {[] { throw I18NRuntimeError("\xC3\xBC", "Low.cpp", 5); }, "I18NRuntimeError: \xC3\xBC" + WAY},
      {[] { throw VRKAssertError("VRK_ASSERT(x);", "Low.cpp", 5); }, "VRKAssertError: VRK_ASSERT(x);" + WAY},
      // In one language, whatever the program's locale.
      {[] { throw VRKSystemError(ENOENT, "/x", "Low", 5); }, "VRKSystemError: /x: No such file or directory (2)" + WAY},
      {[] { vrkTranslateErrors("Mid.cpp", 9, [] { throw std::bad_alloc(); }); },
       "VRKOutOfMemoryError: out of memory, at Mid:9, VRK_RETHROW dir.d/Upper:20"},
      {[] { throw std::logic_error("cause"); }, "VRKStdExceptionError: cause, at dir.d/Upper:20"},
  };
  for (const auto& [raise, what] : CASES) {
    try {
      vrkTranslateErrors("dir.d/Upper.cpp", 20, raise);
      ADD_FAILURE() << what;
    } catch (const std::exception& error) {
      EXPECT_EQ(error.what(), what);
    }
  }
  EXPECT_EQ(VRKThrowable("two\nlines", "Low.cpp", 5).getText(), "two\nlines");
  EXPECT_THROW(vrkTranslateErrors("Upper.cpp", 20, [] { throw 7; }), int);
  VRKFault::arm(VRKFault::ALLOCATION);
  EXPECT_THROW(std::unique_ptr<int>(vrkNew<int>(VRK_HERE, 7)), VRKOutOfMemoryError);
  VRKFault::disarm();
}
