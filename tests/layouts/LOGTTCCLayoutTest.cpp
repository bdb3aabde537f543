#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGManager.h"
#include "log4vrk/core/LOGNDC.h"
#include "log4vrk/layouts/LOGTTCCLayout.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "tests/support/InternalLog.h"

namespace {

// A message that cannot be turned into text.
class BadMessage : public LOGObject {
 public:
  enum Kind { TEXT, LIBRARY, FOREIGN };

  explicit BadMessage(Kind kind) : m_kind(kind) {}
  LOGObject* clone() const override { return new BadMessage(*this); }
  const I18NString& toString() const override {
    if (m_kind == TEXT) throw I18NRuntimeError("bad text", VRK_HERE);
    if (m_kind == LIBRARY) throw VRKThrowable("bad message", VRK_HERE);
    throw std::runtime_error("bad program");
  }

 private:
  Kind m_kind;
};

LOGLoggingEvent eventOf(LOGObject* message, LOGLevel* level = LOGLevel::INFO_OBJ) {
  LOGLoggingEvent event("LOGLogger", LOGManager::getLogger("app.db"), level, message);
  event.setThreadName("main");
  return event;
}

std::string formatted(LOGLayout& layout, LOGObject* message) {
  LOGLoggingEvent event = eventOf(message);
  return layout.format(&event).toUtf8();
}

std::string formatted(LOGLayout& layout) {
  LOGObject message("connected");
  return formatted(layout, &message);
}

template <typename Operation>
void expectAssertion(const char* text, const char* source, int line, Operation&& operation) {
  try {
    operation();
    ADD_FAILURE() << text << " was not raised";
  } catch (const VRKAssertError& error) {
    EXPECT_EQ(error.getText(), I18NString(text));
    EXPECT_EQ(error.getSource(), I18NString(source));
    EXPECT_EQ(error.getLine(), line);
  }
}

}  // namespace

TEST(LayoutTest, WritesTheMessageAndALineFeed) {
  LOGLayout layout;
  EXPECT_EQ(formatted(layout), "connected\n");
  EXPECT_EQ(formatted(layout, nullptr), "\n");
  EXPECT_EQ(layout.format(nullptr), I18NString("")) << "nothing is left of the line before";
}

TEST(LayoutTest, ReportsAMessageThatCannotBeRendered) {
  const struct {
    BadMessage::Kind kind;
    const char* reported;
  } CASES[] = {{BadMessage::TEXT, "log4vrk:ERROR LOGLayout::format -- some i18nstring exception occurred "},
               {BadMessage::LIBRARY, "log4vrk:ERROR LOGLayout::format -- some VRKThrowable exception occurred "},
               {BadMessage::FOREIGN, "log4vrk:ERROR LOGLayout::format -- some generic error occurred\n"}};
  LOGLayout simple;
  LOGTTCCLayout ttcc("NULL");
  LOGManager::getLogger("app.db");  // its making is reported too
  for (const auto& test : CASES) {
    BadMessage message(test.kind);
    const InternalLog simpleLog;
    if (test.kind == BadMessage::FOREIGN) {
      EXPECT_THROW(formatted(simple, &message), std::runtime_error);
    } else {
      EXPECT_EQ(formatted(simple, &message), "\n");
    }
    EXPECT_EQ(simpleLog.text().find(test.reported), 0u) << simpleLog.text();

    const InternalLog ttccLog;
    EXPECT_EQ(formatted(ttcc, &message), "[main] INFO app.db - ") << "the line ends where the error occurred";
    EXPECT_EQ(ttccLog.text(), "log4vrk: LOGTTCCLayout:format --- an unknown error has occurred.\n");
  }
}

TEST(LayoutTest, BothLayoutsHaveThePlainDefaults) {
  LOGLayout simple;
  LOGTTCCLayout ttcc;
  EXPECT_EQ(simple.instanceOf(), I18NString("LOGLayout"));
  EXPECT_EQ(ttcc.instanceOf(), I18NString("LOGTTCCLayout"));
  for (LOGLayout* layout : {&simple, static_cast<LOGLayout*>(&ttcc)}) {
    EXPECT_EQ(layout->getContentType(), I18NString("text/plain"));
    EXPECT_EQ(layout->getHeader(), I18NString(""));
    EXPECT_EQ(layout->getFooter(), I18NString(""));
    EXPECT_EQ(layout->ignoresThrowable(), 1);
    const LOGObject* object = layout;
    expectAssertion("VRK_ASSERT_NAMED(FALSE, \"Unable to clone LOGLayout + derived objects.\");", "LOGLayout", 113,
                    [&] { object->clone(); });
    I18NString& header = layout->getHeader();
    formatted(*layout);
    EXPECT_FALSE(header.isEmpty()) << "there is one result";
  }
}

TEST(TTCCLayoutTest, WritesWhatTheFlagsAskFor) {
  const struct {
    int thread, context;
    const char* nested;
    const char* expected;
  } CASES[] = {
      {1, 0, "", "[main] INFO app.db - connected\n"},        {0, 0, "", "INFO app.db - connected\n"},
      {2, 0, "request", "[main] INFO app.db - connected\n"}, {1, 1, "", "[main] INFO app.db  - connected\n"},
      {1, 1, "request", "[main] INFO app.db - connected\n"}, {0, -1, "", "INFO app.db  - connected\n"},
  };
  for (const auto& test : CASES) {
    LOGTTCCLayout layout(LOGDateLayout::NULL_DATE_FORMAT);
    layout.setThreadPrinting(test.thread);
    layout.setContextPrinting(test.context);
    layout.setLoggerPrefixing(0);  // changes nothing
    if (*test.nested != '\0') LOGNDC::push(test.nested);
    EXPECT_EQ(formatted(layout), test.expected);
    LOGNDC::remove();
    EXPECT_EQ(layout.getLoggerPrefixing(), 0);
  }
}

TEST(TTCCLayoutTest, BeginsWithTheDateInTheFormatAndZoneThatWereSet) {
  const std::string rest = " [main] INFO app.db - connected\n";
  LOGTTCCLayout layout;
  const std::string line = formatted(layout);
  EXPECT_GT(line.size(), rest.size()) << "milliseconds by default";
  EXPECT_EQ(line.substr(line.find_first_not_of("0123456789")), rest);
  layout.setOption("dateformat", "%z");
  layout.setOption("TIMEZONE", "-03:30");
  EXPECT_EQ(formatted(layout), "-0330" + rest);
  EXPECT_EQ(layout.getDateFormat(), I18NString("%z"));
  EXPECT_EQ(layout.getTimeZone(), I18NString("-03:30"));
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
  LOGManager::getLogger("app.db");  // its making is reported too
  const InternalLog log;
  EXPECT_EQ(formatted(layout, nullptr), "[main] INFO app.db - \n");
  EXPECT_EQ(log.text(), "log4vrk: LOGTTCCLayout:format --- getRenderedMessage returned NULL\n\n");

  expectAssertion("VRK_ASSERT(event);", "LOGTTCCLayout", 77, [&] { layout.format(nullptr); });
  LOGLoggingEvent event = eventOf(nullptr, nullptr);
  expectAssertion("VRK_ASSERT(logLevel);", "LOGTTCCLayout", 90, [&] { layout.format(&event); });
}
