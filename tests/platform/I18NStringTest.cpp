#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <thread>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKThrowable.h"

TEST(I18NString, DecodesUtf8AndReplacesWhatCannotBeDecoded) {
  using namespace std::string_view_literals;
  const struct {
    std::string_view utf8;
    std::u16string_view utf16;
  } CASES[] = {
      {"", u""},
      {"a\0b"sv, u"a\0b"sv},
      {"\xE2\x82\xAC\xF0\x9F\x98\x80", u"\u20AC\U0001F600"},
      {"x\xFFy", u"x\uFFFDy"},
      {"cut \xE2\x82", u"cut \uFFFD"},
      {"\xC0\xAF", u"\uFFFD\uFFFD"},                      // overlong
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // a surrogate
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // past the last character
  };
  for (const auto& c : CASES) EXPECT_TRUE(I18NString(c.utf8).view() == c.utf16) << c.utf8;
  EXPECT_TRUE(I18NString(static_cast<const char*>(nullptr)).isEmpty());
  EXPECT_TRUE(I18NString(static_cast<const char16_t*>(nullptr)).isEmpty());
  const char16_t high = 0xD83D, low = 0xDE00;
  EXPECT_EQ((I18NString() + high + low).toUtf8(), "\xF0\x9F\x98\x80");
  EXPECT_EQ((I18NString() + high + "b" + low).toUtf8(),
            "\xEF\xBF\xBD"
            "b\xEF\xBF\xBD");
}

// ASCII takes a shorter way, several characters at a time.
TEST(I18NString, ConvertsTheSameWhereverAsciiEnds) {
  for (std::size_t before = 0; before < 20; ++before) {
    for (std::size_t after = 0; after < 10; ++after) {
      const std::string utf8 = std::string(before, 'a') + "\xC3\xA9" + std::string(after, 'z');
      const I18NString text{std::string_view(utf8)};
      EXPECT_EQ(text.length(), before + 1 + after);
      EXPECT_EQ(text.toUtf8(), utf8);
    }
  }
}

TEST(I18NString, TakesBytesInANamedEncoding) {
  EXPECT_EQ(I18NString("a\x80", "ascii"), u"a\uFFFD");
  EXPECT_EQ(I18NString("\xE4\xA4", "iso-8859-15"), u"\u00E4\u20AC");
  EXPECT_TRUE(I18NString("", "utf-8").isEmpty());
  EXPECT_THROW(I18NString("x", "no such encoding"), I18NRuntimeError);
  VRKFault::arm(VRKFault::TEXT_CONVERSION);
  EXPECT_THROW(I18NString("x").toUtf8(), I18NRuntimeError);
  VRKFault::disarm();
}

TEST(I18NString, AppendsFindsAndCuts) {
  I18NString text("\xC3\xA9");
  text += text;
  text = text + 'c' + u'\u20AC' + -7 + 8u + std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(text + std::numeric_limits<std::uint64_t>::max(),
            "\xC3\xA9\xC3\xA9"
            "c\u20AC-78-922337203685477580818446744073709551615");

  const I18NString name("shop.orders.new");
  const std::size_t none = I18NString::npos;
  EXPECT_TRUE(name.findLast(".") == 11 && name.findLast(".", 11) == 11 && name.findLast(".", 10) == 4);
  EXPECT_TRUE(name.findLast(".", 3) == none && name.findLast("orders", 5) == 5 && name.findLast("orders", 4) == none);
  EXPECT_TRUE(name.substring(5, 6) == "orders" && name.substring(12, 100) == "new" && name.substring(100) == "");
  EXPECT_TRUE(name.startsWith("") && name.startsWith(name) && !name.startsWith("hop") && !name.startsWith(name + "."));
}

TEST(I18NString, LendsItsBytesPerThreadAndCountsTheZeroOnlyThere) {
  long length = 0;
  const char* const lent = I18NString("\xC3\xA9").c_str(&length);
  EXPECT_EQ(length, 3);
  std::thread([] { EXPECT_STREQ(I18NString("another thread's").c_str(), "another thread's"); }).join();
  EXPECT_STREQ(lent, "\xC3\xA9");
  EXPECT_STREQ(I18NString("\xC3\xA9").toBytes(&length).get(), "\xC3\xA9");
  EXPECT_EQ(length, 2);
}
