#include "tests/layouts/Golden.h"

using namespace vrktest;

TEST(HTMLLayoutTest, WritesAPage) {
  LOGLevel quiet(29999, "NOTICE", 6), renamed(60000, "DEBUG", 7);
  const Row ROWS[] = {
      {LOGLevel::DEBUG_OBJ, u"<b>a & \"b\"</b>", "", ""},
      {LOGLevel::INFO_OBJ, u"connected", "", ""},
      {LOGLevel::WARN_OBJ, u"disk low", "user <17>", ""},
      {LOGLevel::ERROR_OBJ, u"lost", "", "overflow <main>"},
      {LOGLevel::FATAL_OBJ, u"", "user", "overflow"},
      {&quiet, u"\u041f\u0440 \u6f22 \U0001f600.", "", ""},
      {&renamed, u"green", "", ""},
  };
  LOGHTMLLayout layout;
  layout.setTitle("Night & <b>day</b>");
  for (const int location : {0, 1}) {
    const InternalLog log;
    layout.setLocationInfo(location);
    std::string startTime, text;
    do {
      startTime = LOGDate().toString().toUtf8();
      text = layout.getHeader().toUtf8();
    } while (startTime != LOGDate().toString().toUtf8());
    const LOGLoggingEvent common = emptyEvent("app.<T>", LOGLevel::INFO_OBJ);
    const std::string elapsed = std::to_string(common.getTimeStamp() - LOGLoggingEvent::getStartTime());
    for (const Row& row : ROWS) text += formatted(layout, common, row);
    text += layout.getFooter().toUtf8();
    std::string expected = replaced(golden("LOGHTMLLayout.html"), "@START@", startTime);
    expected = replaced(expected, "@ELAPSED@", elapsed);
    if (location != 0) {
      expected = replaced(expected, "<th>Message", "<th>File:Line</th>\n<th>Message");
      expected = replaced(expected, "<td title=\"Message", "<td>?:?</td>\n<td title=\"Message");
    }
    EXPECT_EQ(text + "\n", expected) << "the page itself has no last line end";
    const std::string noted = "log4vrk: LOGHTMLLayout::format ---- getRenderedMessage returned NULL\n\n";
    EXPECT_NE(log.text().find(noted), noted.npos) << log.text();
  }
}

TEST(HTMLLayoutTest, WantsALevel) {
  LOGHTMLLayout layout;
  EXPECT_EQ(layout.format(nullptr), "");
  LOGLoggingEvent event = emptyEvent("app", nullptr);
  EXPECT_EQ(assertionOf([&] { layout.format(&event); }), "LOGHTMLLayout: VRK_ASSERT(logLevel);");
}
