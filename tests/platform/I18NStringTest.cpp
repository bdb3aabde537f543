#include "tests/support/Tests.h"

TEST(I18NString, DecodesAndEncodesAndReplacesWhatIsIllFormed) {
  using namespace std::string_view_literals;
  const std::pair<std::string_view, std::u16string_view> CASES[] = {
      {"", u""},
      {"a\0b"sv, u"a\0b"sv},
      {"\xE2\x82\xAC\xF0\x9F\x98\x80", u"\u20AC\U0001F600"},
      {"x\xFFy", u"x\uFFFDy"},
      {"cut \xE2\x82", u"cut \uFFFD"},
      {"\xC0\xAF", u"\uFFFD\uFFFD"},            // overlong
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},  // a surrogate
  };
  for (const auto& [utf8, utf16] : CASES) EXPECT_TRUE(I18NString(utf8).view() == utf16) << utf8;
  const char16_t high = 0xD83D, low = 0xDE00;
  EXPECT_EQ((I18NString(u"\u20AC") + high + low).toUtf8(), "\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ((I18NString() + high + 'b' + low + -7 + std::numeric_limits<long long>::min()).toUtf8(),
            "\xEF\xBF\xBD"
            "b\xEF\xBF\xBD-7-9223372036854775808");
  EXPECT_EQ(I18NString("\xE4\xA4", "iso-8859-15") + I18NString("a\x80", "ascii"), u"\u00E4\u20ACa\uFFFD");
  EXPECT_THROW(I18NString("x", "no such encoding"), I18NRuntimeError);
  // ASCII takes a shorter way, several characters at a time.
  for (std::size_t before = 0; before < 20; ++before) {
    for (std::size_t after = 0; after < 10; ++after) {
      const std::string utf8 = std::string(before, 'a') + "\xC3\xA9" + std::string(after, 'z');
      const I18NString text{std::string_view(utf8)};
      EXPECT_TRUE(text.length() == before + 1 + after && text.toUtf8() == utf8) << utf8;
    }
  }
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
