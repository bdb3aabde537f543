#include <sys/wait.h>

#include "tests/layouts/Golden.h"
#include "tests/support/RandomTexts.h"

using namespace vrktest;

namespace {

const std::string PID = std::to_string(::getpid());

// By logger com.acme.shop.Orders at 2026-08-01 12:34:56.789012 UTC, in Kathmandu.
struct Made {
  explicit Made(LOGLevel* level = LOGLevel::WARN_OBJ, const char* text = "order \"17\"") {
    LOGObject message(text);
    event = LOGLoggingEvent("LOGLogger", LOGManager::getLogger("com.acme.shop.Orders"), level, &message);
    event.setThreadName("main");
    event.setTimeStamp(1785587696, 789012345);
  }
  LOGLoggingEvent event;
};

std::string written(LOGJSONLayout& layout, LOGLoggingEvent event = Made().event) {
  return layout.format(&event).toUtf8();
}

}  // namespace

TEST(JSONLayoutTest, WritesWhatEachPresetHas) {
  static constexpr LOGSourceLocation PLACE = {"shop/src/Orders.cpp", "accept", 42};
  LOG4VRK_CONTEXT("customer", "anna", "tries", 2);
  LOGNDC::push("client 7");
  Made made;
  made.event.setSourceLocation(&PLACE);
  made.event.setThrowableStrRep("no stock\n at 3");
  made.event.getNDC();
  LOGNDC::remove();
  const std::pair<const char*, std::string> CASES[] = {
      {"plain", R"({"time":"2026-08-01T18:19:56.789012+05:45","level":"WARN","logger":"com.acme.shop.Orders",)"
                R"("thread":"main","pid":PID,"message":"order \"17\"","nested":"client 7",)"
                R"("context":{"customer":"anna","tries":2},"file":"Orders.cpp","line":42,"function":"accept",)"
                R"("error":"no stock\n at 3"})"},
      {"ECS", R"({"@timestamp":"2026-08-01T12:34:56.789012Z","log.level":"WARN","message":"order \"17\"",)"
              R"("ecs.version":"8.11.0","log.logger":"com.acme.shop.Orders","process.thread.name":"main",)"
              R"("process.pid":PID,"nested":"client 7","log.origin.file.name":"Orders.cpp","log.origin.file.line":42,)"
              R"("log.origin.function":"accept","labels":{"customer":"anna","tries":"2"},"error.message":"no stock",)"
              R"("error.stack_trace":"no stock\n at 3"})"},
      {"gcp", R"({"time":"2026-08-01T12:34:56.789012Z","severity":"WARNING","message":"order \"17\"",)"
              R"("logger":"com.acme.shop.Orders","thread":"main","pid":PID,"nested":"client 7",)"
              R"("logging.googleapis.com/sourceLocation":{"file":"Orders.cpp","line":"42","function":"accept"},)"
              R"("logging.googleapis.com/labels":{"customer":"anna","tries":"2"},"stack_trace":"no stock\n at 3"})"},
  };
  for (const auto& [preset, expected] : CASES) {
    LOGJSONLayout layout(preset);
    EXPECT_EQ(written(layout, made.event), replaced(expected, "PID", PID) + "\n");
  }
}

TEST(JSONLayoutTest, WritesTimesAsTheyAreSet) {
  struct Case {
    const char *format, *zone;
    std::int64_t seconds;
    std::int32_t nanoseconds;
    const char* expected;
  };
  for (const Case& each :
       {Case{"iso", "", 0, 999, "\"1970-01-01T05:30:00.000000+05:30\""},
        Case{"ISO", "UTC", -1, 999999999, "\"1969-12-31T23:59:59.999999Z\""},
        Case{"iso", "-03:30", 1785587696, 5000, "\"2026-08-01T09:04:56.000005-03:30\""},
        Case{"epoch", "UTC", 1785587696, 789012345, "1785587696.789012"}, Case{"epoch", "", -1, 500000000, "-0.500000"},
        Case{"epoch", "", -2, 0, "-2.000000"}, Case{"millis", "", 1785587696, 789012345, "1785587696789"},
        Case{"millis", "", -1, 1000000, "-999"}}) {
    LOGJSONLayout layout;
    layout.setFields("time");
    layout.setTimeFormat(each.format);
    layout.setTimeZone(each.zone);
    Made made;
    for (int i = 0; i < 2; ++i) {
      made.event.setTimeStamp(each.seconds, each.nanoseconds);
      EXPECT_EQ(written(layout, made.event), std::string("{\"time\":") + each.expected + "}\n");
    }
  }
}

TEST(JSONLayoutTest, TakesNamesAndPartsAndReportsWhatItDoesNotUnderstand) {
  LOGJSONLayout layout;
  layout.setFields("message, level nonsense");
  layout.setNames("message=msg,level=q\"l time=msg bad place= fields=x");
  EXPECT_EQ(written(layout), "{\"q\\\"l\":\"WARN\",\"msg\":\"order \\\"17\\\"\"}\n");
  layout.setFields("time message");
  const InternalLog log;
  layout.setPreset("xml");
  layout.setTimeFormat("roman");
  layout.setTimeFormat("millis");
  EXPECT_EQ(log.count("[xml] is not understood. Known are plain, ecs and gcp."), 1);
  EXPECT_EQ(log.count("LOGJSONLayout::setTimeFormat -- [roman] is not understood."), 1);
  EXPECT_EQ(written(layout), "{\"msg\":1785587696789,\"_msg\":\"order \\\"17\\\"\"}\n") << "no name twice";
  EXPECT_EQ(layout.format(nullptr), "");
  EXPECT_EQ(log.count("LOGJSONLayout::format --- Event is NULL."), 1);
  // Ranks between the levels, and those of a program's own, have a severity, too.
  const std::pair<LOGLevel, const char*> SEVERITIES[] = {{{5000, "TRACE", 7}, "DEBUG"},
                                                         {{25000, "NOTICE", 5}, "INFO"},
                                                         {{40000, "BAD", 3}, "ERROR"},
                                                         {{60000, "WORST", 0}, "CRITICAL"}};
  LOGJSONLayout gcp("gcp");
  gcp.setFields("level");
  for (auto [level, severity] : SEVERITIES) {
    EXPECT_EQ(written(gcp, Made(&level).event), std::string("{\"severity\":\"") + severity + "\"}\n");
  }
}

TEST(JSONLayoutTest, KeepsTheTypesOfFields) {
  const TempDir dir;
  LOGJSONLayout layout;
  layout.setFields("message context fields");
  LOGFileAppender file(&layout, dir.file("log").c_str());
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  logger->addAppender(&file);
  LOG4VRK_CONTEXT("id", 1, "line", "\u2028\x1b[31m");
  LOG4VRK_INFO_KV(logger, "m", "id", 2, "d", 1e300, "nan", std::nan(""), "inf", -HUGE_VAL, "no", nullptr, "b", false);
  LOG4VRK_INFO_KV(logger, "m", "message", 1, "_message", 2, "__message", 3, "context", "c", "", "empty");
  logger->removeAppender(&file);
  const Texts expected = {
      R"({"message":"m","context":{"line":"\u2028\u001b[31m"},"id":2,"d":1e+300,"nan":null,"inf":null,"no":null,)"
      R"("b":false})",
      R"({"message":"m","context":{"id":1,"line":"\u2028\u001b[31m"},"_message":1,"__message":2,"___message":3,)"
      R"("_context":"c","":"empty"})"};
  EXPECT_EQ(linesOf(dir.file("log")), expected);
}

TEST(JSONLayoutTest, SettingsChangeWhileThreadsLog) {
  constexpr long EACH = 3000;
  const TempDir dir;
  LOGJSONLayout layout;
  LOGFileAppender file(&layout, dir.file("log").c_str(), 0, 1, 65536);
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a");
  logger->addAppender(&file);
  std::atomic<int> logging{3};
  onThreads(4, [&](int t) {
    for (long i = 0; t > 0 && i < EACH; ++i) {
      LOG4VRK_CONTEXT("thread", t);
      LOG4VRK_INFO_KV(logger, "text", "i", i);
    }
    if (t > 0) --logging;
    for (int i = 0; t == 0 && logging > 0; ++i) {
      layout.setPreset(i % 2 == 0 ? "gcp" : "plain");
      layout.setFields(i % 3 == 0 ? "message fields" : "time level thread message context fields");
    }
  });
  logger->removeAppender(&file);
  file.close();
  const std::vector<std::string> lines = linesOf(dir.file("log"));
  EXPECT_EQ(lines.size(), 3U * EACH);
  for (const std::string& line : lines) {
    EXPECT_TRUE(line.front() == '{' && line.find("\"message\":\"text\"") != line.npos) << line;
    EXPECT_TRUE(line.find(",\"i\":") != line.npos && line.back() == '}') << line;
  }
}

TEST(JSONLayoutTest, AForkedChildHasItsOwnNumber) {
  LOGJSONLayout layout;
  layout.setFields("process");
  EXPECT_EQ(written(layout), "{\"pid\":" + std::to_string(::getpid()) + "}\n");
  EXPECT_EQ(0, statusInChild([&] { EXPECT_EQ(written(layout), "{\"pid\":" + std::to_string(::getpid()) + "}\n"); }));
}

TEST(JSONLayoutTest, TwoParsersReadWhateverIsLogged) { expectParsersToRead(20000); }

TEST(SafeTextTest, EachEventIsOneLineThatCanBeUndone) { expectOneLineEach(20000); }

TEST(SafeTextTest, EscapesWhatIsNotTextAndNothingElse) {
  const std::pair<const char16_t*, const char*> CASES[] = {
      {u"plain \u00e9\u20ac\U0001F600 \"q\" \u00a0\u2027\u202f\u2065\u206a\u0600", nullptr},
      {u"a\nb\r\tc\\n", "a\\nb\\r\\tc\\\\n"},
      {u"\x1b[31m\x7f\x01", "\\x1b[31m\\x7f\\x01"},
      {u"\u0080\u0085\u009f", "\\u0080\\u0085\\u009f"},
      {u"\u061c\u200e\u200f\u2028\u2029\u202a\u202e\u2066\u2069",
       "\\u061c\\u200e\\u200f\\u2028\\u2029\\u202a\\u202e\\u2066\\u2069"},
  };
  LOGPatternLayout one("%e|%m"), all("%m %X{k}%n"), off("%m %X{k}%n");
  all.setSafeText(true);
  for (const auto& [text, shown] : CASES) {
    const std::string raw = I18NString(text).toUtf8(), safe = shown != nullptr ? shown : raw;
    LOG4VRK_CONTEXT("k", text);
    EXPECT_EQ(formatted(one, text), std::string(safe).append("|").append(raw));
    EXPECT_EQ(formatted(all, text), replaced("# #\n", "#", safe));
    EXPECT_EQ(formatted(off, text), replaced("# #\n", "#", raw));
    EXPECT_EQ(undone(safe), raw);
  }
  EXPECT_TRUE(all.getSafeText());
  all.setSafeText(false);
  EXPECT_EQ(formatted(all, "a\nb"), "a\nb \n");
}
