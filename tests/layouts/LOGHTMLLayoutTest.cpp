#include "tests/layouts/Golden.h"

using namespace vrktest;

namespace {

struct Page {
  std::string startTime, elapsed, text;
};

// Header, a row for each event, footer.
Page pageOf(LOGHTMLLayout& layout) {
  static LOGLevel quiet(29999, "NOTICE", 6), renamed(60000, "DEBUG", 7);
  const std::vector<Row> ROWS = {
      {LOGLevel::DEBUG_OBJ, u"<b>a & \"b\"</b>", "", ""},
      {LOGLevel::INFO_OBJ, u"connected", "", ""},
      {LOGLevel::WARN_OBJ, u"disk low", "user <17>", ""},
      {LOGLevel::ERROR_OBJ, u"lost", "", "overflow <main>"},
      {LOGLevel::FATAL_OBJ, u"", "user", "overflow"},
      {&quiet, u"\u041f\u0440 \u6f22 \U0001f600.", "", ""},
      {&renamed, u"green", "", ""},
  };
  Page page;
  do {
    page.startTime = LOGDate().toString().toUtf8();
    page.text = layout.getHeader().toUtf8();
  } while (page.startTime != LOGDate().toString().toUtf8());
  const LOGLoggingEvent common = emptyEvent("app.<T>", LOGLevel::INFO_OBJ);
  page.elapsed = std::to_string(common.getTimeStamp() - LOGLoggingEvent::getStartTime());
  for (const Row& row : ROWS) page.text += formatted(layout, common, row);
  page.text += layout.getFooter().toUtf8();
  return page;
}

}  // namespace

TEST(HTMLLayoutTest, WritesAPage) {
  LOGHTMLLayout layout;
  for (const int location : {0, 1}) {
    const InternalLog log;
    layout.setLocationInfo(location);
    const Page page = pageOf(layout);
    std::string expected = replaced(golden("LOGHTMLLayout.html"), "@START@", page.startTime);
    expected = replaced(expected, "@ELAPSED@", page.elapsed);
    if (location != 0) {
      expected = replaced(expected, "<th>Message", "<th>File:Line</th>\n<th>Message");
      expected = replaced(expected, "<td title=\"Message", "<td>?:?</td>\n<td title=\"Message");
    }
    EXPECT_EQ(page.text + "\n", expected) << "the page itself has no last line end";
    const std::string noted = "log4vrk: LOGHTMLLayout::format ---- getRenderedMessage returned NULL\n\n";
    EXPECT_NE(log.text().find(noted), noted.npos) << log.text();
  }
}

TEST(HTMLLayoutTest, LooksInABrowserAsItIsMeantTo) {
  if (std::system("command -v chromium >/dev/null 2>&1") != 0) {
    GTEST_SKIP() << "there is no browser to open the page in (Debian package chromium)";
  }
  LOGHTMLLayout layout;
  const TempDir directory;
  // The mark at the start says what a server's content type would: the page is in UTF-8.
  directory.write("log.html", "\xef\xbb\xbf" + pageOf(layout).text);
  const std::string browse = "cd '" + directory.path() + "' && bash '" LOG4VRK_SOURCE_DIR "/tests/layouts/browser.sh'";
  ASSERT_EQ(std::system(browse.c_str()), 0) << directory.read("errors");
  const std::string dom = directory.read("dom");
  const std::size_t begin = dom.find("<pre id"), end = dom.find("<script>");
  ASSERT_TRUE(begin < end && end != dom.npos) << dom;
  EXPECT_EQ(dom.substr(begin, end - begin) + "\n", golden("LOGHTMLLayout.look.txt"));
}

TEST(HTMLLayoutTest, CopiesItsTitleAsItIsAndWantsALevel) {
  LOGHTMLLayout layout;
  layout.setTitle("Night & <b>day</b>");
  EXPECT_NE(layout.getHeader().toUtf8().find("\n<title>Night & <b>day</b></title>\n"), std::string::npos);
  EXPECT_EQ(layout.format(nullptr), "");
  LOGLoggingEvent event = emptyEvent("app", nullptr);
  EXPECT_EQ(assertionOf([&] { layout.format(&event); }), "LOGHTMLLayout: VRK_ASSERT(logLevel);");
}
