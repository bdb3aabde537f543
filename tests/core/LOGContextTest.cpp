#include <cmath>

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

/// Writes what a pattern makes of each event.
struct PatternAppender : LOGAppenderSkeleton {
  explicit PatternAppender(const char* pattern) : layout(pattern) {}
  void append(LOGLoggingEvent* event) override { lines.push_back(layout.format(event).toUtf8()); }
  void close() override { setClosed(1); }

  LOGPatternLayout layout;
  Texts lines;
};

struct LOGContextTest : testing::Test {
  LOGContextTest() { tree.getRootLogger()->addAppender(&shown); }
  Texts taken() { return std::exchange(shown.lines, {}); }

  const Deadline deadline{110};
  PatternAppender shown{"%m|%X"};
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a.b");
};

struct Point {
  int x, y;
  friend std::ostream& operator<<(std::ostream& out, const Point& point) { return out << point.x << ',' << point.y; }
};

}  // namespace

TEST_F(LOGContextTest, FieldsKeepWhatProgramsHave) {
  const char* const none = nullptr;
  const std::string text = "a text";
  LOG4VRK_INFO_KV(logger, "accepted " << 17, "order", 17, "total", 17.5, "paid", true, "big", UINT64_MAX, "low",
                  INT64_MIN);
  LOG4VRK_WARN_KV(logger, "", "float", 0.1f, "nan", std::nan(""), "tiny", 5e-324, "none", nullptr, "also", none);
  LOG4VRK_ERROR_KV(logger, "", "text", text, text, "v", "u16", u"\u20ac", "wide", L'w', "point", Point{1, 2}, "c", 'c');
  LOG4VRK_FATAL_KV(logger, "", "quoted", "say \"a=b\"\n", "empty", "", "bad", "\xC3(", "i18n", I18NString("t"));
  LOG4VRK_DEBUG_KV(logger, "twice", "a", 1, none, 2, "a", 3);
  const Texts expected = {
      "accepted 17|order=17 total=17.5 paid=true big=18446744073709551615 low=-9223372036854775808",
      "|float=0.1 nan=nan tiny=5e-324 none=null also=null",
      "|text=\"a text\" \"a text\"=v u16=\u20ac wide=w point=1,2 c=c",
      "|quoted=\"say \\\"a=b\\\"\\n\" empty=\"\" bad=\uFFFD( i18n=t",
      "twice|\"\"=2 a=3",
  };
  EXPECT_EQ(taken(), expected);
  const std::string longName = std::string(254, 'n') + "\u00fc", longValue(100000, 'v');
  LOG4VRK_INFO_KV(logger, "", longName, longValue);
  EXPECT_EQ(taken(), Texts{"|" + std::string(254, 'n') + "=" + longValue}) << "cut before a character, not inside";
}

// What examples/structured.expected does not show.
TEST_F(LOGContextTest, ScopesNestHideAndEnd) {
  const auto log = [&](const char* text) { LOG4VRK_INFO(logger, text); };
  {
    LOG4VRK_CONTEXT("order", 17, "customer", "anna");
    log("outer");
    {
      LOG4VRK_CONTEXT("order", 18);
      LOG4VRK_CONTEXT("step", "pay");
      LOG4VRK_INFO_KV(logger, "inner", "step", 2.5);
      EXPECT_EQ(LOGContext::get("order") + LOGContext::get("step") + LOGContext::get("none"), "18pay");
    }
    std::thread([&, context = LOGContext::capture()] {
      LOG4VRK_CONTEXT("own", 1, "order", 1);
      {
        const LOGContext::Scope scope(context);
        log("given");
      }
      log("given back");
    }).join();
  }
  const Texts expected = {"outer|order=17 customer=anna", "inner|customer=anna order=18 step=2.5",
                          "given|own=1 order=17 customer=anna", "given back|own=1 order=1"};
  EXPECT_EQ(taken(), expected);
}

// The memory of a context moves when it grows, also while a message is rendered.
TEST_F(LOGContextTest, AMessageMayHaveAContextOfItsOwnWhileItIsRendered) {
  LOG4VRK_CONTEXT("order", 17);
  HookMessage message("hook", [&] {
    const std::string large(10000, 'x');
    LOG4VRK_CONTEXT("large", large);
    EXPECT_EQ(LOGContext::get("large"), large);
  });
  logger->info(&message);
  EXPECT_EQ(taken(), Texts{"hook|order=17"});
}

TEST_F(LOGContextTest, ACopyOwnsWhatItPrints) {
  struct Keeping : LOGAppenderSkeleton {
    void append(LOGLoggingEvent* event) override { copies.emplace_back(*event); }
    std::vector<LOGLoggingEvent> copies;
  } keeping;
  keeping.setName("keeping");
  tree.getRootLogger()->addAppender(&keeping);
  LOGObject object("object");
  {
    LOG4VRK_CONTEXT("order", 17);
    LOG4VRK_INFO_KV(logger, "text", "total", 17.5);
    logger->info(&object);
    keeping.copies.emplace_back("LOGLogger", logger, LOGLevel::INFO_OBJ, &object);
  }
  taken();
  LOG4VRK_CONTEXT("order", 18);
  std::vector<LOGLoggingEvent> again(keeping.copies);
  again[0] = LOGLoggingEvent(again[0]);
  keeping.copies.clear();
  for (LOGLoggingEvent& copy : again) shown.append(&copy);
  EXPECT_EQ(taken(), (Texts{"text|order=17 total=17.5", "object|order=17", "object|order=17"}));
  EXPECT_EQ(again[0].getField("total") + again[0].getField("order") + again[0].getField("none"), "17.517");
  tree.getRootLogger()->removeAppender(&keeping);
}
