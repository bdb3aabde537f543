#include "tests/layouts/Golden.h"

using namespace vrktest;

namespace {

std::string written(const char* pattern, const I18NString& text = "order 17") {
  LOGPatternLayout layout(pattern);
  return formatted(layout, text);
}

}  // namespace

// What examples/patterns.expected does not show.
TEST(PatternLayoutTest, WritesTheItemsOfThePattern) {
  const std::pair<const char*, const char*> CASES[] = {
      {"%c{1}|%c{2}|%c{4}|%c{5}|%c{}",
       "Orders|shop.Orders|com.acme.shop.Orders|com.acme.shop.Orders|com.acme.shop.Orders"},
      {"%c{18446744073709551617}", "com.acme.shop.Orders"},
      {"%d{}{UTC} %d{absolute}{+05:45} %d{NULL}|", "2026-08-01 12:34:56,789 18:19:56,789 |"},
      {"%d{%H:%M:%S.%Q}{Europe/Berlin} %d{DATE}{UTC}", "14:34:56.789 01 Aug 2026 12:34:56,789"},
      {"{%m{x}} 100%% %%m", "{order 17{x}} 100% %m"},
      {"\u0436 %m \u65e5\U0001F600", "\u0436 order 17 \u65e5\U0001F600"},
      {"", ""},
      // Widths.
      {"[%6p][%-6p][%2p][%3%]", "[  INFO][INFO  ][INFO][  %]"},
      {"[%.2p][%.9p][%.0p][%.4000000000m]", "[FO][INFO][][order 17]"},
      {"[%5.2p][%-5.2p][%-9.17c{2}]", "[   FO][FO   ][shop.Orders]"},
  };
  for (const auto& [pattern, expected] : CASES) EXPECT_EQ(written(pattern), expected) << pattern;
  EXPECT_EQ(written("%d"), written("%d{%Y-%m-%d %H:%M:%S,%Q}")) << "local time";
  EXPECT_EQ(written("%-18446744073709551617p|"), "INFO" + std::string(996, ' ') + "|");
}

TEST(PatternLayoutTest, WritesThePlaceOfALogStatementWhereItIsKnown) {
  static constexpr LOGSourceLocation PLACES[] = {{"shop/src/Orders.cpp", "accept", 42}, {"Main.cpp", "main", 7}};
  LOGPatternLayout layout("%s %s{path} %s{line} %s{file} %s{function} %.3s %F");
  const auto written = [&](const LOGSourceLocation* place) {
    LOGLoggingEvent event;
    event.setSourceLocation(place);
    return layout.format(&event).toUtf8();
  };
  EXPECT_EQ(written(&PLACES[0]), "Orders.cpp:42 shop/src/Orders.cpp 42 Orders.cpp accept :42 ?");
  EXPECT_EQ(written(&PLACES[1]), "Main.cpp:7 Main.cpp 7 Main.cpp main p:7 ?");
  EXPECT_EQ(written(nullptr), "? ? ? ? ? ? ?");
}

// What is the same in all lines of a second is kept.
TEST(PatternLayoutTest, ShowsTheMomentOfEachEvent) {
  LOGPatternLayout layout("%d{%H:%M:%S.%Q}{UTC} [%t] %p");
  LOGLoggingEvent event;
  event.setThreadName("me");
  for (const auto& [second, text] : {std::pair{0, "00:00:00.005"}, {1, "00:00:01.005"}, {0, "00:00:00.005"}}) {
    event.setTimeStamp(second, 5000000);
    EXPECT_EQ(layout.format(&event).toUtf8().substr(0, 17), text + std::string(" [me]"));
  }
}

TEST(PatternLayoutTest, NeverSplitsACharacter) {
  const std::tuple<const char*, const char16_t*, const char*> CASES[] = {
      {"[%6m]", u"\u0436\u0443\u043a", "[   \u0436\u0443\u043a]"},
      {"[%.2m]", u"a\U0001F600", "[\U0001F600]"},
      {"[%.1m]", u"a\U0001F600", "[]"},
      {"[%3.3m]", u"\U0001F600\U0001F601", "[ \U0001F601]"},
      // What is no character is counted as one, and replaced on the way out.
      {"[%m][%-3.1m][%.2m]", u"\xD83Dx\xDE00", "[\uFFFDx\uFFFD][\uFFFD  ][x\uFFFD]"},
  };
  for (const auto& [pattern, message, expected] : CASES) EXPECT_EQ(written(pattern, message), expected) << pattern;
}

TEST(PatternLayoutTest, WritesWhatItDoesNotUnderstandAsItStandsAndReportsItOnce) {
  const std::tuple<const char*, const char*, const char*, int> CASES[] = {
      {"%m %-", "order 17 %-", "%-", 4},
      {"%5.", "%5.", "%5.", 1},
      {"%5.x%m", "%5.xorder 17", "%5.", 1},
      {"%m %-05.3Z%m", "order 17 %-05.3Zorder 17", "%-05.3Z", 4},
      {"\u65e5\U0001F600 %\U0001F600%n", "\u65e5\U0001F600 %\U0001F600\n", "%\U0001F600", 4},
      {"%d{%%%m", "%d{%order 17", "%d{", 1},
      {"%d{DATE}{UTC %m", "%d{DATE}{UTC order 17", "%d{DATE}{", 1},
      {"%m %c{-1}", "order 17 %c{-1}", "%c{-1}", 4},
      {"%m %s{column}", "order 17 %s{column}", "%s{column}", 4},
  };
  written("");  // makes the logger, which is noted in the internal log
  for (const auto& [pattern, expected, item, position] : CASES) {
    const InternalLog log;
    LOGPatternLayout layout(pattern);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(formatted(layout, "order 17"), expected) << pattern;
    EXPECT_EQ(log.text(), std::string("log4vrk:ERROR LOGPatternLayout::setConversionPattern -- [") + item +
                              "] at character " + std::to_string(position) +
                              " of the pattern is not understood and is written as it stands.\n");
  }
  const InternalLog log;
  written("%Y %m %Y %d{ISO8601}{Nowhere}");
  EXPECT_EQ(log.count("[%Y] at character"), 2);
  EXPECT_EQ(log.count("unknown time zone [Nowhere]"), 1);
}

TEST(PatternLayoutTest, LetsAMessageUseTheLayoutThatWritesIt) {
  LOGPatternLayout layout("%p %m");
  HookMessage message("", [&] {
    EXPECT_EQ(formatted(layout, "inside"), "INFO inside");
    layout.setConversionPattern("%d{%Y}{UTC} %c{1} [%m]%n");
  });
  EXPECT_EQ(formatted(layout, &message), "2026 Orders []\n");
}
