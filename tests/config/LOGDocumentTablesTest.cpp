#include "log4vrk/config/internal/LOGDocumentTables.h"
#include "tests/config/DocumentTable.h"
#include "tests/support/Tests.h"

namespace {

using Tables = LOGDocumentTables;

TEST(DocumentTables, HaveTheDefaultsOfTheObjects) {
  const auto expect = [](const char* className, const char* name, const I18NString& value) {
    const Tables::Parameter* const parameter = Tables::findParameter(className, name);
    ASSERT_NE(nullptr, parameter) << className << " " << name;
    EXPECT_EQ(value, I18NString(parameter->defaultValue)) << className << " " << name;
  };
  const auto boolean = [](int flag) { return flag != 0 ? "true" : "false"; };
  const auto number = [](long value) { return I18NString() + value; };
  LOGAsyncAppender queue;
  expect("LOGAsyncAppender", "BufferSize", number(queue.getBufferSize()));
  expect("LOGAsyncAppender", "LocationInfo", boolean(queue.getLocationInfo()));
  expect("LOGDurableAsyncAppender", "BufferSize", number(LOGDurableAsyncAppender().getBufferSize()));
  const LOGRollingFileAppender rolling;
  expect("LOGFileAppender", "Append", boolean(LOGFileAppender().getAppend()));
  expect("LOGRollingFileAppender", "Append", boolean(rolling.getAppend()));
  expect("LOGRollingFileAppender", "MaxBackupIndex", number(rolling.getMaxBackupIndex()));
  expect("LOGRollingFileAppender", "MaximumFileSize", number(rolling.getMaximumFileSize()));
  const LOGTimeRollingFileAppender timed;
  expect("LOGTimeRollingFileAppender", "MaximumFileSize", number(static_cast<long>(timed.getMaximumFileSize())));
  expect("LOGTimeRollingFileAppender", "MaxHistory", number(timed.getMaxHistory()));
  expect("LOGTimeRollingFileAppender", "Compress", timed.getCompress());
  expect("LOGTimeRollingFileAppender", "BufferedIO", boolean(timed.getBufferedIO()));
  expect("LOGSyslogAppender", "Facility", LOGSyslogAppender().getFacility());
  expect("LOGLocalUDPAppender", "Port", number(LOGLocalUDPAppender().getPort()));
  const LOGTCPSocketAppender tcp;
  expect("LOGTCPSocketAppender", "RemoteHost", tcp.getRemoteHost());
  expect("LOGTCPSocketAppender", "port", number(tcp.getPort()));
  expect("LOGTCPSocketAppender", "LocationInfo", boolean(tcp.getLocationInfo()));
  expect("LOGTCPSocketAppender", "Secure", boolean(tcp.getSecure()));
  expect("LOGTCPSocketAppender", "ReconnectionDelay", number(tcp.getReconnectionDelay()));
  expect("LOGTTCCLayout", "DateFormat", LOGTTCCLayout().getDateFormat());
  expect("LOGPatternLayout", "ConversionPattern", LOGPatternLayout().getConversionPattern());
  expect("LOGHTMLLayout", "Title", LOGHTMLLayout().getTitle());
  expect("LOGRateLimitFilter", "MaxEvents", number(LOGRateLimitFilter().getMaxEvents()));
  expect("LOGRateLimitFilter", "Seconds", number(LOGRateLimitFilter().getSeconds()));
  expect("LOGFallbackAppender", "RetryDelay", number(LOGFallbackAppender().getRetryDelay()));
  expect("LOGJournalAppender", "Socket", LOGJournalAppender().getSocket());
  const LOGColorConsoleAppender console;
  expect("LOGColorConsoleAppender", "Target", console.getTarget());
  expect("LOGColorConsoleAppender", "Colors", console.getColors());
  expect("LOGColorConsoleAppender", "Prefix", console.getPrefix());
  expect("LOGColorConsoleAppender", "DebugColor", console.getColor(*LOGLevel::DEBUG_OBJ));
  expect("LOGColorConsoleAppender", "FatalColor", console.getColor(*LOGLevel::FATAL_OBJ));
}

TEST(DocumentTables, AreDescribedInTheDocumentsAndInTheSchema) {
  const std::string document = vrktest::fileText(LOG4VRK_SOURCE_DIR "/docs/configuration.md"),
                    schema = vrktest::fileText(LOG4VRK_SOURCE_DIR "/tools/log4vrk.xsd");
  for (const Tables::Parameter& each : Tables::parameters()) {
    constexpr const char* TYPES[] = {"boolean", "number", "level", "text"};
    const std::string defaultValue = *each.defaultValue != '\0' ? "`" + std::string(each.defaultValue) + "`" : "";
    const std::string row = "| `" + std::string(each.className + 3) + "` | `" + each.name + "` | " + TYPES[each.type] +
                            (each.match == Tables::ANY_CASE ? ", name in any case" : "") + " | " + defaultValue +
                            " | " + each.effect + " |\n";
    EXPECT_NE(std::string::npos, document.find(row)) << row;
    EXPECT_NE(std::string::npos, schema.find("<xs:enumeration value=\"" + std::string(each.name) + "\">")) << each.name;
    std::string effect;
    for (const char* c = each.effect; *c != '\0'; ++c) effect += *c == '\'' ? "&#x27;" : std::string(1, *c);
    EXPECT_NE(std::string::npos, schema.find(each.className + 3 + std::string(": ") + effect)) << effect;
  }
  for (const Tables::Element& each : Tables::elements()) {
    const std::string name = each.name == "log4j:configuration" ? "configuration" : each.name;
    EXPECT_NE(std::string::npos, schema.find("<xs:element name=\"" + name + "\"")) << name;
    for (const std::string& attribute : each.attributes) {
      EXPECT_NE(std::string::npos, schema.find("<xs:attribute name=\"" + attribute + "\"")) << attribute;
    }
  }
}

TEST(DocumentTables, HaveEveryFindingExplained) {
  const std::string document = vrktest::fileText(LOG4VRK_SOURCE_DIR "/docs/surprises.md");
  for (const vrktest::CheckedDocument& each : vrktest::CHECKED_DOCUMENTS) {
    std::istringstream words(each.findings);
    for (std::string severity, name; words >> severity >> name;) {
      EXPECT_NE(std::string::npos, document.find("`" + name + "`")) << name;
    }
  }
}

}  // namespace
