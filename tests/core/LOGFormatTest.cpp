#include "log4vrk/format.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

using LOGFormatTest = TreeTest;

struct Money {
  int cents;
};
struct Bad {};

}  // namespace

template <>
struct fmt::formatter<Money> : fmt::formatter<std::string_view> {
  template <typename Context>
  auto format(const Money& money, Context& context) const {
    return fmt::format_to(context.out(), "{}.{:02}", money.cents / 100, money.cents % 100);
  }
};
template <>
struct fmt::formatter<Bad> : fmt::formatter<std::string_view> {
  template <typename Context>
  auto format(const Bad&, Context& context) const -> decltype(context.out()) {
    throw std::runtime_error("no value");
  }
};

TEST_F(LOGFormatTest, FormatsArgumentsOfAllKindsWhenTheLevelIsEnabled) {
  const char array[] = "array";
  std::string text = "text";
  const std::string longText(700, 'x');
  LOG4VRK_INFO_F(logger, "no argument, {{}}");
  LOG4VRK_WARN_F(logger, "order {} in {:.3f} s: {:>6}|{}|{}|{}", 17, 0.25, text, array, 'c', std::string_view("view"));
  LOG4VRK_ERROR_F(logger, "{} {:x} {}", Money{1705}, 255u, true);
  LOG4VRK_FATAL_F(logger, "{0}{0}", longText);
  LOG4VRK_LOG_F(logger, LOGLevel::WARN_OBJ, "{}", "\u00fc\xff");
  LOG4VRK_INFO_F(logger, "before {} after", Bad());
  EXPECT_EQ(root.texts, (Texts{"no argument, {}", "order 17 in 0.250 s:   text|array|c|view", "17.05 ff true",
                               longText + longText, "\u00fc\uFFFD", "before <not printed: no value>"}));
  root.texts.clear();
  logger->setLevel(LOGLevel::ERROR_OBJ);
  int evaluated = 0;
  LOG4VRK_WARN_F(logger, "{}", ++evaluated);
  LOG4VRK_DEBUG_F(logger, "{}", ++evaluated);
  LOG4VRK_LOG_F(logger, LOGLevel::INFO_OBJ, "{}", ++evaluated);
  EXPECT_EQ(evaluated, 0);
  EXPECT_EQ(root.texts, Texts());
}
