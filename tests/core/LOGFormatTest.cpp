#include "log4vrk/format.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

using LOGFormatTest = TreeTest;

struct Bad {};
struct Here {};

// Text and line of each event.
struct PlaceAppender : RecordingAppender {
  void append(LOGLoggingEvent* event) override {
    RecordingAppender::append(event);
    texts.back() += " at " + std::to_string(event->getSourceLocation()->line);
  }
};

}  // namespace

template <>
struct fmt::formatter<Bad> : fmt::formatter<std::string_view> {
  template <typename Context>
  auto format(const Bad&, Context& context) const -> decltype(context.out()) {
    throw std::runtime_error("no value");
  }
};

template <>
struct fmt::formatter<Here> : fmt::formatter<std::string_view> {
  template <typename Context>
  auto format(const Here&, Context& context) const {
    return fmt::format_to(context.out(), "on {}", VRKThread::currentThreadId());
  }
};

namespace {

#define LOG_AND_EXPECT(text, ...)      \
  LOG4VRK_INFO_F(logger, __VA_ARGS__); \
  expected.push_back((text) + std::string(" at ") + std::to_string(__LINE__))
#define LOG_AND_EXPECT_FORMATTED(...) LOG_AND_EXPECT(fmt::format(__VA_ARGS__), __VA_ARGS__)

// Logs arguments of every kind, and changes them right after the call. Returns what the events have to read.
Texts logAll(LOGLogger* logger) {
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '\''; }
    std::string do_grouping() const override { return "\3"; }
  };
  Texts expected;
  std::string text = "text";
  char array[] = "array";
  const char* pointer = array;
  const char* const null = nullptr;
  LOG_AND_EXPECT_FORMATTED("{} {} {} {} {:>{}}", text, array, pointer, std::string_view(text).substr(1), text, 9);
  LOG_AND_EXPECT_FORMATTED("{} and {}", text, Here());
  array[0] = 'x';
  text = "gone";
  LOG_AND_EXPECT_FORMATTED("{} {} {:x} {:08.3f} {} {}", -1, 18446744073709551615u, short{255}, 0.5, 1.5f, 2.5L);
  LOG_AND_EXPECT_FORMATTED("{} {} {} {:p}", 'c', true, static_cast<void*>(array), pointer);
  LOG_AND_EXPECT_FORMATTED("no argument, {{}}");
  LOG_AND_EXPECT("\uFFFD\uFFFD", "\xff{}", "\xfe");
  LOG_AND_EXPECT("<not printed: string pointer is null>", "{}", null);
  for (const std::size_t size : {0, 107, 108, 109, 123, 124, 125, 600}) {
    text.assign(size, 'x');
    LOG_AND_EXPECT_FORMATTED("{}", text);
    LOG_AND_EXPECT_FORMATTED("{0} {0}", text);
  }
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  LOG_AND_EXPECT_FORMATTED("{:L}", 1234567);
  std::locale::global(before);
  return expected;
}

}  // namespace

TEST_F(LOGFormatTest, ReadTheSameWhoeverFormatsThem) {
  const struct {
    const char* name;
    bool isDurable, hasFilter, hasPlace, hasNeighbour;
  } cases[] = {{"a queue", false, false, false, false},         {"a durable queue", true, false, false, false},
               {"with a filter", false, true, false, false},    {"with a durable filter", true, true, false, false},
               {"with location", false, false, true, false},    {"with a neighbour", false, false, false, true},
               {"with a durable one", true, false, false, true}};
  const TempDir dir;
  tree.getRootLogger()->removeAppender(&root);
  PlaceAppender direct, behind;
  HookFilter filter([] { return LOGFilter::m_NEUTRAL; });
  for (const auto& each : cases) {
    const auto queue =
        each.isDurable ? std::make_unique<LOGDurableAsyncAppender>() : std::make_unique<LOGAsyncAppender>();
    queue->setName("queue");
    if (each.isDurable) static_cast<LOGDurableAsyncAppender&>(*queue).setDirectory(dir.file("rings").c_str());
    if (each.hasFilter) queue->addFilter(&filter);
    queue->setLocationInfo(each.hasPlace);
    queue->addAppender(&behind);
    if (each.hasNeighbour) logger->addAppender(&direct);
    tree.getRootLogger()->addAppender(queue.get());
    direct.texts.clear();
    behind.texts.clear();
    const Texts expected = logAll(logger);
    queue->close();
    tree.getRootLogger()->removeAppender(queue.get());
    EXPECT_EQ(behind.texts, expected) << each.name;
    EXPECT_EQ(direct.texts, each.hasNeighbour ? expected : Texts()) << each.name;
    logger->removeAppender(&direct);
  }
  // Put off, since it comes from inside a log call.
  Texts expected;
  tree.getRootLogger()->addAppender(&direct);
  other.onAppend = [&](const std::string& text) {
    if (text == "begin") expected = logAll(tree.getLogger("c"));
  };
  logger->addAppender(&other);
  direct.texts.clear();
  LOG4VRK_INFO_F(logger, "begin");
  logger->removeAppender(&other);
  tree.getRootLogger()->removeAppender(&direct);
  direct.texts.erase(direct.texts.begin());
  EXPECT_EQ(direct.texts, expected);
}

TEST_F(LOGFormatTest, FormatsWhatIsEnabledAndSaysWhatItCannotPrint) {
  logger->setLevel(LOGLevel::ERROR_OBJ);
  int evaluated = 0;
  LOG4VRK_WARN_F(logger, "{}", ++evaluated);
  LOG4VRK_LOG_F(logger, LOGLevel::INFO_OBJ, "{}", ++evaluated);
  LOG4VRK_ERROR_F(logger, "{} before {} after", ++evaluated, Bad());
  LOG4VRK_FATAL_F(logger, "{0}{0}", std::string(700, 'x'));
  LOG4VRK_LOG_F(logger, LOGLevel::OFF_OBJ, "{}", "\u00fc\xff");
  EXPECT_EQ(root.texts, (Texts{"1 before <not printed: no value>", std::string(1400, 'x'), "\u00fc\uFFFD"}));
}
