#include "tests/layouts/Golden.h"

using namespace vrktest;

TEST(LayoutTest, WritesTheMessageAndALineFeed) {
  LOGLayout layout;
  EXPECT_EQ(formatted(layout), "connected\n");
  EXPECT_EQ(formatted(layout, nullptr), "\n");
  EXPECT_EQ(layout.format(nullptr), I18NString("")) << "nothing is left of the line before";
  I18NString& header = layout.getHeader();
  EXPECT_TRUE(header.isEmpty() && layout.getFooter().isEmpty());
  formatted(layout);
  EXPECT_FALSE(header.isEmpty()) << "there is one result";
  LOGPatternLayout pattern("[%p] %m%n");
  EXPECT_EQ(formatted(pattern, nullptr, nullptr), "[] \n");
  const InternalLog log;
  EXPECT_EQ(pattern.format(nullptr), I18NString(""));
  EXPECT_EQ(log.text(), "log4vrk:ERROR LOGPatternLayout::format --- Event is NULL.\n");
}

TEST(LayoutTest, ReportsAMessageThatCannotBeRenderedAndGoesOn) {
  const std::tuple<HookMessage::Hook, const char*, bool> CASES[] = {
      {[] { throw I18NRuntimeError("bad text", VRK_HERE); }, "some i18nstring exception occurred ", true},
      {[] { throw VRKThrowable("bad message", VRK_HERE); }, "some VRKThrowable exception occurred ", true},
      {[] { throw std::runtime_error("bad program"); }, "some generic error occurred\n", false}};
  LOGLayout simple;
  LOGPatternLayout pattern("%p %m|");
  LOGTTCCLayout ttcc("NULL");
  for (const auto& [hook, reported, contained] : CASES) {
    HookMessage message("", hook);
    const auto expect = [&, what = reported, goesOn = contained](LOGLayout& layout, const char* name,
                                                                 const char* text) {
      formatted(layout);  // the making of its logger is reported too
      const InternalLog log;
      if (goesOn) {
        EXPECT_EQ(formatted(layout, &message), text);
      } else {
        EXPECT_THROW(formatted(layout, &message), std::runtime_error);
      }
      EXPECT_EQ(log.text().find(std::string("log4vrk:ERROR ") + name + "::format -- " + what), 0u) << log.text();
    };
    expect(simple, "LOGLayout", "\n");
    expect(pattern, "LOGPatternLayout", "INFO |");
    formatted(ttcc);
    const InternalLog log;
    EXPECT_EQ(formatted(ttcc, &message), "[main] INFO com.acme.shop.Orders - ") << "it ends where the error occurred";
    EXPECT_EQ(log.text(), "log4vrk: LOGTTCCLayout:format --- an unknown error has occurred.\n");
  }
}

TEST(TTCCLayoutTest, WritesWhatTheFlagsAskFor) {
  const std::tuple<int, int, const char*, const char*> CASES[] = {
      {1, 0, "", "[main] INFO com.acme.shop.Orders - connected\n"},
      {0, -1, "", "INFO com.acme.shop.Orders  - connected\n"},
      {2, 0, "request", "[main] INFO com.acme.shop.Orders - connected\n"},
      {1, 1, "request", "[main] INFO com.acme.shop.Orders - connected\n"},
  };
  for (const auto& [thread, context, nested, expected] : CASES) {
    LOGTTCCLayout layout(LOGDateLayout::NULL_DATE_FORMAT);
    layout.setThreadPrinting(thread);
    layout.setContextPrinting(context);
    layout.setLoggerPrefixing(0);  // changes nothing
    if (*nested != '\0') LOGNDC::push(nested);
    EXPECT_EQ(formatted(layout), expected);
    LOGNDC::remove();
  }
}

TEST(TTCCLayoutTest, BeginsWithTheDateInTheFormatAndZoneThatWereSet) {
  const std::string rest = " [main] INFO com.acme.shop.Orders - connected\n";
  LOGTTCCLayout layout;
  const std::string line = formatted(layout);
  EXPECT_EQ(line.substr(line.find_first_not_of("-0123456789")), rest) << "milliseconds by default";
  layout.setOption("dateformat", "%z");
  layout.setOption("TIMEZONE", "-03:30");
  EXPECT_EQ(formatted(layout), "-0330" + rest);
  LOGTimeZone zone{I18NString("+05:30")};
  layout.setDateFormat("%z", &zone);
  EXPECT_EQ(formatted(layout), "+0530" + rest);
  layout.setDateFormat("%z", nullptr);
  EXPECT_EQ(layout.getTimeZone(), I18NString("")) << "the process's own";

  LOGTTCCLayout other(LOGDateLayout::NULL_DATE_FORMAT);
  other.setTimeZone("-03:30");
  EXPECT_EQ(formatted(other), rest.substr(1)) << "a zone alone makes no date";
  other.setOption(LOGDateLayout::DATE_FORMAT_OPTION, "%z");
  EXPECT_EQ(formatted(other), "-0330" + rest);
}

TEST(TTCCLayoutTest, WantsAnEventWithALevelAndNotesAMissingMessage) {
  LOGTTCCLayout layout("NULL");
  formatted(layout);  // the making of its logger is reported too
  const InternalLog log;
  EXPECT_EQ(formatted(layout, nullptr), "[main] INFO com.acme.shop.Orders - \n");
  EXPECT_EQ(log.text(), "log4vrk: LOGTTCCLayout:format --- getRenderedMessage returned NULL\n\n");
  EXPECT_EQ(assertionOf([&] { layout.format(nullptr); }), "LOGTTCCLayout: VRK_ASSERT(event);");
  EXPECT_EQ(assertionOf([&] { formatted(layout, nullptr, nullptr); }), "LOGTTCCLayout: VRK_ASSERT(logLevel);");
  EXPECT_EQ(assertionOf([&] { static_cast<LOGObject&>(layout).clone(); }),
            "LOGLayout: VRK_ASSERT_NAMED(FALSE, \"Unable to clone LOGLayout + derived objects.\");");
}
