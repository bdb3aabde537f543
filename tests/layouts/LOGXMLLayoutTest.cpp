#include "tests/layouts/Golden.h"

using namespace vrktest;

namespace {

const std::vector<Row> EVENTS = {
    {LOGLevel::WARN_OBJ, u"disk low", "", "", 0},
    {LOGLevel::INFO_OBJ, u"a < b && \"c\" > d", "request 17", "", 1},
    {LOGLevel::FATAL_OBJ, u"\u041f\u0440\u0438\u0432\u0435\u0442 \u6f22\u5b57 \U0001f600.", "", "overflow in <main>",
     1},
    {nullptr, u"", "request 18", "\u00fc", 0},
};

}  // namespace

TEST(XMLLayoutTest, WritesElementsThatAnXmlParserReads) {
  LOGXMLLayout layout;
  LOGLoggingEvent common = emptyEvent("app.db", LOGLevel::INFO_OBJ);
  common.setThreadName("main");
  const InternalLog log;
  std::string text;
  for (const Row& row : EVENTS) {
    layout.setOption("LocationInfo", row.location != 0 ? "TRUE" : "fAlse");
    layout.setOption("locationinfo", "true");  // changes nothing
    text += formatted(layout, common, row);
  }
  const std::string time = std::to_string(common.getTimeStamp());
  EXPECT_EQ(text, replaced(replaced(golden("LOGXMLLayout.txt"), "@TIME@", time), "\n", "\r\n"));
  EXPECT_EQ(log.text(), "log4vrk: LOGXMLLayout::format ---- getRenderedMessage returned NULL\n\n");

  const TempDir directory;
  const std::string path = directory.write("log.xml", "<log xmlns:log4j=\"x\">" + text + "</log>");
  const VRKIDOM_NodeList messages = VRKIDOM_Parser().parse(path.c_str()).getElementsByTagName("log4j:message");
  ASSERT_EQ(messages.getLength(), static_cast<long>(EVENTS.size()));
  for (long i = 0; i < messages.getLength(); ++i) {
    EXPECT_EQ(messages.item(i).getChildNodes().item(0).getNodeValue().toUtf8(),
              I18NString(EVENTS[static_cast<std::size_t>(i)].message).toUtf8());
  }
}

TEST(XMLLayoutTest, CopiesEveryTextAsItIs) {
  LOGXMLLayout layout;
  LOGLoggingEvent event = emptyEvent("a\"<&b", LOGLevel::INFO_OBJ);
  event.setRenderedMessage("x]]>y");
  const std::string text = layout.format(&event).toUtf8();
  EXPECT_NE(text.find("category=\"a\"<&b\" "), text.npos) << text;
  EXPECT_NE(text.find("thread=\"worker<1>\">"), text.npos) << text;
  EXPECT_NE(text.find("<![CDATA[x]]>y]]></log4j:message>"), text.npos) << text;
  EXPECT_EQ(layout.format(nullptr), "");
  EXPECT_EQ(layout.ignoresThrowable(), 0) << "a throwable is part of the text";
}

TEST(XMLLayoutTest, TakesItsOptionByExactNameAndInAnyCaseOfTheValue) {
  const std::tuple<const char*, const char*, int> CASES[] = {{"LocationInfo", "TRUE", 1},
                                                             {"LocationInfo", "fAlse", 0},
                                                             {"LocationInfo", " true", 7},
                                                             {"locationinfo", "true", 7}};
  LOGXMLLayout layout;
  for (const auto& [option, value, expected] : CASES) {
    layout.setLocationInfo(7);
    layout.setOption(option, value);
    EXPECT_EQ(layout.getLocationInfo(), expected) << option << "=" << value;
  }
}
