#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGNDC.h"
#include "log4vrk/net/internal/LOGEventEncoder.h"
#include "tests/support/Doubles.h"

namespace {

class EventEncoderTest : public testing::Test {
 protected:
  std::string encode(LOGLevel* level, std::string_view message, bool location = false) {
    LOGLoggingEvent event("", tree.getLogger("shop \"a\"]\\"), level, nullptr);
    event.setTimeStamp(1795262712, 1999999);
    event.setThreadName(u8"gövde");
    LOGEncodedEvent encoded = encoder.encode(event, message, location);
    encoded.sequence = 2147483648;
    for (int twice = 0; twice < 2; ++twice) LOGEventEncoder::stamp(encoded, "5e");
    return encoded.text;
  }

  vrktest::Tree tree;
  const LOGEventEncoder encoder{"shop host", "", 17};
};

TEST_F(EventEncoderTest, WritesAnEventAsASyslogMessage) {
  const std::string head = "1 2026-11-21T12:05:12.001999Z shop_host - 17 - ";
  const std::string data =
      "[meta sequenceId=\"1\"][log4vrk@32473 stream=\"5e\" sequence=\"2147483648\" logger=\"shop \\\"a\\\"\\]\\\\\" "
      "thread=\"gövde\" context=\"\"";
  EXPECT_EQ("<14>" + head + data + "] Grüße\n", encode(LOGLevel::INFO_OBJ, "Grüße\n\n"));
  EXPECT_EQ("<11>" + head + data + " class=\"?\" method=\"?\" file=\"?\" line=\"?\"] ",
            encode(LOGLevel::ERROR_OBJ, "", true));
  LOGLevel loud(1, "LOUD", -5), quiet(1, "QUIET", 50000);
  EXPECT_EQ("<8>", encode(&loud, "").substr(0, 3));
  EXPECT_EQ("<15>", encode(&quiet, "").substr(0, 4));
}

TEST_F(EventEncoderTest, FieldsAreAnElementOfTheirOwn) {
  LOG4VRK_CONTEXT("order no=\"1\"]", 17, "\u00fc", 17.5, "a-name-that-is-longer-than-32-characters", "]");
  const std::string element = R"( context=""][fields@32473 order_no__1__="17" __="17.5" )"
                              R"(a-name-that-is-longer-than-32-ch="\]"] text)";
  const std::string text = encode(LOGLevel::INFO_OBJ, "text");
  EXPECT_EQ(element, text.substr(text.size() - element.size()));
  std::vector<std::unique_ptr<LOGContext::Scope>> scopes;
  for (int i = 0; i < 100; ++i) {
    scopes.push_back(std::make_unique<LOGContext::Scope>(std::to_string(i), std::string(5000, ']')));
  }
  EXPECT_LE(encode(LOGLevel::INFO_OBJ, std::string(100000, 'x')).size(), LOGEventEncoder::LONGEST);
  while (!scopes.empty()) scopes.pop_back();
}

TEST_F(EventEncoderTest, CutsWhatIsTooLongBetweenCharactersAndSaysSo) {
  LOGNDC::push(std::string(5000, ']').c_str());
  std::string message;
  for (int i = 0; i < 40000; ++i) message += "ü";
  for (int shift = 0; shift < 2; ++shift) {
    const std::string text = encode(LOGLevel::INFO_OBJ, message);
    EXPECT_LE(text.size(), LOGEventEncoder::LONGEST);
    EXPECT_GE(text.size(), LOGEventEncoder::LONGEST - LOGEventEncoder::LONGEST_STAMP);
    const std::string note = "ü... [cut: " + std::to_string(message.size()) + " bytes]";
    EXPECT_EQ(note, text.substr(text.size() - note.size()));
    EXPECT_NE(text.npos, text.find("\\]...\"")) << "so is the context";
    message.insert(0, "x");
  }
  LOGNDC::remove();
}

}  // namespace
