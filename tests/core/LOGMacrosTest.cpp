#include <cfloat>
#include <clocale>
#include <iomanip>
#include <locale>
#include <optional>

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

using LOGMacrosTest = TreeTest;

struct Point {
  int x, y;
  friend std::ostream& operator<<(std::ostream& out, const Point& point) {
    return out << '(' << point.x << ", " << point.y << ')';
  }
};

enum class Colour { RED };
[[maybe_unused]] std::ostream& operator<<(std::ostream& out, Colour) { return out << "red"; }
enum Plain { SEVEN = 7 };

struct Raising {
  friend std::ostream& operator<<(std::ostream& out, const Raising&) {
    out << "half ";
    throw std::runtime_error("no value");
  }
};

struct Record {
  char name[8] = {'n', 'a', 'm', 'e', 0, '!', '!', '!'};
  unsigned bits : 3;
};

// The same parts alone, and behind a manipulator that changes nothing: that takes another way.
#define SHOWN(expected, ...)                                                  \
  Shown {                                                                     \
    __LINE__, expected, [](LOGLogger* to) { LOG4VRK_INFO(to, __VA_ARGS__); }, \
        [](LOGLogger* to) { LOG4VRK_INFO(to, std::skipws << __VA_ARGS__); }   \
  }
struct Shown {
  int line;
  std::string expected;
  void (*alone)(LOGLogger*);
  void (*behind)(LOGLogger*);
};

const Record record{{'n', 'a', 'm', 'e', 0, '!', '!', '!'}, 5};
const std::string LONG(600, 'x');

const Shown PARTS[] = {
    SHOWN("", ""),
    SHOWN("text and string", "text" << ' ' << std::string("and") << std::string_view(" string")),
    SHOWN("sixteen letters!, seventeen letters", "sixteen letters!"
                                                     << ", seventeen letters"),
    SHOWN("name", record.name),
    SHOWN("|", static_cast<const char*>(nullptr) << "|" << std::string()),
    SHOWN(LONG + "1", LONG << 1),
    SHOWN("\u00fc \u20ac \U0001F600", "\u00fc " << u"\u20ac " << U'\U0001F600'),
    SHOWN("w\u00fcst v u16 u8", L"w\u00fc" << std::wstring(L"st ") << L'v' << std::u16string(u" u16") << u8" u8"),
    SHOWN("\u00fc", '\xC3' << '\xBC'),
    SHOWN("a\uFFFDb", "a\xC3"
                          << "b"),
    SHOWN("\u00fc and o", I18NString("\u00fc") << " and " << LOGObject("o")),
    SHOWN("-5 200 -9223372036854775808 18446744073709551615",
          -5 << ' ' << static_cast<unsigned char>(200) << ' ' << INT64_MIN << ' ' << UINT64_MAX),
    SHOWN("true false 5 7 red", true << ' ' << false << ' ' << record.bits << ' ' << SEVEN << ' ' << Colour::RED),
    SHOWN("(1, 2) null", Point{1, 2} << ' ' << (nullptr == nullptr ? "null" : "")),
    SHOWN("0.1 100000 1e+16 1e-06 -0 17.5 0.3 inf", 0.1 << ' ' << 1e5 << ' ' << 1e16 << ' ' << 1e-6 << ' ' << -0.0
                                                        << ' ' << 17.5f << ' ' << 0.3L << ' ' << HUGE_VAL),
    SHOWN("0.30000000000000004 1234567890123456", 0.1 + 0.2 << ' ' << 1234567890123456.0),
    // What a manipulator sets holds until it is set again; a width is for one part.
    SHOWN("ff ffffffff fffe 255", std::hex << 255 << ' ' << -1 << ' ' << short{-2} << ' ' << std::dec << 255),
    SHOWN("[   7][7][ab  ]", '[' << std::setw(4) << 7 << "][" << 7 << "][" << std::left << std::setw(4) << "ab" << ']'),
    SHOWN("3.14 2.718 3.14159", std::setprecision(3) << 3.14159 << ' ' << std::setprecision(4) << 2.71828 << ' '
                                                     << std::setprecision(-1) << 3.14159),
    SHOWN("3.141590 1 0 +2.5", std::fixed << 3.14159 << std::defaultfloat << ' ' << std::noboolalpha << true << ' '
                                          << false << ' ' << std::showpos << 2.5),
    SHOWN("1\n2", 1 << std::endl
                    << 2),
    SHOWN("00c0ffee \"q\"", std::hex << std::setfill('0') << std::setw(8) << 0xC0FFEE << ' ' << std::quoted("q")),
    SHOWN("1 2", std::pair<int, int>(1, 2).first << " " << std::pair<int, int>(1, 2).second),
    // A part that fails is named, and takes nothing else with it.
    SHOWN("before half <not printed: no value> after 1", "before " << Raising() << " after " << 1),
};

struct PlaceAppender : LOGAppenderSkeleton {
  void append(LOGLoggingEvent* event) override { place = event->getSourceLocation(); }
  std::atomic<const LOGSourceLocation*> place{nullptr};
};

}  // namespace

TEST_F(LOGMacrosTest, AreOneStreamThatTakesWhatProgramsHave) {
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '\''; }
    std::string do_grouping() const override { return "\3"; }
    char do_decimal_point() const override { return ','; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  for (const Shown& part : PARTS) {
    root.texts.clear();
    part.alone(logger);
    part.behind(logger);
    EXPECT_EQ(root.texts, (Texts{part.expected, part.expected})) << "line " << part.line;
  }
  std::locale::global(before);
  for (const double number : {DBL_MAX, DBL_MIN, 1.0 / 3, 5e-324, 123456789.125, 9999999999999998.0}) {
    LOG4VRK_INFO(logger, number);
    EXPECT_EQ(std::strtod(root.texts.back().c_str(), nullptr), number) << root.texts.back();
  }
}

// What examples/statements.expected does not show.
TEST_F(LOGMacrosTest, LogOnlySoOften) {
  for (int i = 0; i < 5; ++i) LOG4VRK_INFO_EVERY_N(logger, i == 4 ? 0 : 1, "all " << i);
  EXPECT_EQ(root.texts, (Texts{"all 0", "all 1", "all 2", "all 3", "all 4"}));
  root.texts.clear();
  int calls = 0;
  Texts expected;
  const auto loggedThrice = [&] {
    LOG4VRK_INFO_EVERY(logger, 0.05, "often");
    if (root.texts.size() == expected.size()) return ++calls == 0;
    expected.push_back(calls == 0 ? "often" : "often (" + std::to_string(calls) + " left out)");
    calls = 0;
    return expected.size() == 3;
  };
  ASSERT_TRUE(eventually(loggedThrice));
  EXPECT_EQ(root.texts, expected);
  // What is disabled is neither counted nor evaluated.
  root.texts.clear();
  for (LOGLevel* const level : {LOGLevel::WARN_OBJ, LOGLevel::DEBUG_OBJ}) {
    logger->setLevel(level);
    LOG4VRK_INFO_ONCE(logger, "once");
    LOG4VRK_INFO(logger, ++calls);
    LOG4VRK_INFO_KV(logger, "fields", "n", ++calls);
  }
  EXPECT_EQ(root.texts, (Texts{"once", std::to_string(calls - 1), "fields"}));
}

TEST_F(LOGMacrosTest, CarryTheirPlaceAndTheErrorNumber) {
  PlaceAppender places;
  logger->addAppender(&places);
  LOG4VRK_INFO(logger, "here");
  const LOGSourceLocation* const first = places.place;
  ASSERT_TRUE(first != nullptr && first->line == __LINE__ - 2);
  EXPECT_TRUE(std::string(first->file).find("LOGMacrosTest.cpp") != std::string::npos);
  EXPECT_STREQ(first->function, "TestBody");
  logger->info("a call knows no place");
  EXPECT_EQ(places.place, nullptr);
  logger->removeAppender(&places);
  LOGAsyncAppender queue;
  queue.addAppender(&places);
  logger->addAppender(&queue);
  for (const std::string& text : {std::string("short"), std::string(1000, 'x')}) {
    places.place = nullptr;
    LOG4VRK_INFO(logger, text);
    EXPECT_TRUE(eventually([&] { return places.place != nullptr && places.place != first; })) << text;
  }
  logger->removeAppender(&queue);
  queue.close();

  root.texts.clear();
  errno = ENOENT;
  LOG4VRK_WARN_ERRNO(logger, "cannot open " << (errno = 0, "file"));
  EXPECT_EQ(root.texts, Texts{"cannot open file: No such file or directory [2]"});
}

TEST_F(LOGMacrosTest, AFailedCheckLogsDeliversAndAborts) {
  const TempDir dir;
  const auto check = [&] {
    LOGPatternLayout layout("%p %m%n");
    LOGFileAppender file(&layout, dir.file("log").c_str());
    LOGAsyncAppender queue;
    queue.addAppender(&file);
    LOGLogger* const out = LOGManager::getLogger("check");
    out->addAppender(&queue);
    LOG4VRK_CHECK(out, 1 + 1 == 2, "holds");
    LOG4VRK_CHECK(out, 1 + 1 == 3, "sum " << 2);
  };
  EXPECT_EQ(statusInChild(check), -SIGABRT);
  EXPECT_EQ(dir.read("log"), "FATAL check failed: 1 + 1 == 3: sum 2\n");
}

#undef LOG4VRK_LOWEST_RANK
#define LOG4VRK_LOWEST_RANK LOGLevel::WARN_RANK

TEST_F(LOGMacrosTest, BelowTheLowestRankAreNotCompiled) {
  int evaluated = 0;
  LOG4VRK_INFO((++evaluated, logger), ++evaluated);
  LOG4VRK_DEBUG_EVERY_N(logger, ++evaluated, ++evaluated);
  if (evaluated == 0)
    LOG4VRK_WARN(logger, "logged");
  else
    LOG4VRK_INFO(logger, "a macro is one statement");
  EXPECT_EQ(evaluated, 0);
  EXPECT_EQ(root.texts, Texts{"logged"});
}
