#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include "log4vrk/platform/VRKThrowable.h"

namespace {

/// What comes out of `operation` when its errors are translated at Upper:20.
std::string translated(const std::function<void()>& operation) {
  try {
    vrkTranslateErrors("dir.d/Upper.cpp", 20, operation);
  } catch (const std::exception& error) {
    return error.what();
  }
  return "nothing";
}

}  // namespace

TEST(VRKThrowable, TellsItsClassTextAndWayOnOneLine) {
  const std::string WAY = ", at Low:5, VRK_RETHROW dir.d/Upper:20";
  const struct {
    std::function<void()> raise;
    std::string what;
  } CASES[] = {
      {[] { throw VRKThrowable("two\nlines\r\n", "Low.cpp", 5); }, "VRKThrowable: two lines  " + WAY},
      {[] { throw I18NRuntimeError("\xC3\xBC", "Low.cpp", 5); }, "I18NRuntimeError: \xC3\xBC" + WAY},
      {[] { throw VRKOutOfMemoryError("Low.cpp", 5); }, "VRKOutOfMemoryError: out of memory" + WAY},
      // In one language, whatever the program's locale.
      {[] { throw VRKSystemError(ENOENT, "/x.log", "Low", 5); },
       "VRKSystemError: /x.log: No such file or directory (2)" + WAY},
      {[] { vrkTranslateErrors("Mid.cpp", 9, [] { throw VRKThrowable("own", "Low.cpp", 5); }); },
       "VRKThrowable: own, at Low:5, VRK_RETHROW Mid:9, VRK_RETHROW dir.d/Upper:20"},
      {[] { throw std::bad_alloc(); }, "VRKOutOfMemoryError: out of memory, at dir.d/Upper:20"},
      {[] { throw std::logic_error("cause"); }, "VRKStdExceptionError: cause, at dir.d/Upper:20"},
      {[] {}, "nothing"},
  };
  for (const auto& c : CASES) EXPECT_EQ(translated(c.raise), c.what);
  EXPECT_EQ(VRKThrowable("two\nlines", "Low.cpp", 5).getText(), "two\nlines");
  EXPECT_THROW(vrkTranslateErrors("Upper.cpp", 20, [] { throw 7; }), int);
  EXPECT_THROW(vrkTranslateErrors("Upper.cpp", 20, [] { throw VRKSystemError(EIO, "", "", 1); }), VRKSystemError);
}

TEST(VRKThrowable, AnAssertionCarriesItsExpressionAndPlace) {
  try {
    VRK_ASSERT(1 + 1 == 3);
    FAIL();
  } catch (const VRKAssertError& error) {
    EXPECT_EQ(error.getText(), "VRK_ASSERT(1 + 1 == 3);");
    EXPECT_EQ(error.getSource(), "VRKThrowableTest");
    EXPECT_EQ(error.getLine(), __LINE__ - 5);
  }
  VRKFault::arm(VRKFault::ALLOCATION);
  EXPECT_THROW(std::unique_ptr<int>(vrkNew<int>(VRK_HERE, 7)), VRKOutOfMemoryError);
  VRKFault::disarm();
  EXPECT_EQ(*std::unique_ptr<int>(vrkNew<int>(VRK_HERE, 7)), 7);
}
