// What threads, loggers and patterns keep from one event to the next must never show in another event.

#include <mutex>

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

const I18NString PATTERN = "%d{%H:%M:%S}{UTC} [%t] %-5p %c{1}:%c - %m%n";

std::string clockOf(std::time_t second) {
  char text[16];
  std::tm parts{};
  gmtime_r(&second, &parts);
  return {text, std::strftime(text, sizeof text, "%H:%M:%S", &parts)};
}

/// A tree with a file that is written directly and two behind queues; the first of these has location info on.
struct Caches : testing::Test {
  Caches() {
    for (LOGAsyncAppender* queue : {&caller, &dispatcher}) queue->setBufferSize(4096);
    caller.setLocationInfo(1);
    caller.addAppender(&behindCaller);
    dispatcher.addAppender(&behindDispatcher);
    tree.getLogger("direct")->addAppender(&direct);
    tree.getLogger("caller")->addAppender(&caller);
    tree.getLogger("dispatcher")->addAppender(&dispatcher);
  }
  ~Caches() override {
    caller.close();
    dispatcher.close();
  }

  /// Logs the second and what the line has to look like behind its date, by a text that is put together or by an
  /// object.
  static void logOne(LOGLogger* logger, LOGLevel* level, long n) {
    const std::string name = logger->getName().toUtf8(), last = name.substr(name.rfind('.') + 1);
    const std::string levelName = level->toString().toUtf8();
    const std::string text = std::to_string(std::time(nullptr)) + " [" + std::to_string(VRKThread::currentThreadId()) +
                             "] " + levelName + std::string(levelName.size() < 5 ? 5 - levelName.size() : 0, ' ') +
                             " " + last + ":" + name;
    HookMessage object(text.c_str());
    n % 3 == 0 ? logger->forcedLog(LOGLogger::m_FQCN, level, &object) : logger->forcedLog(level, LOGMessage() << text);
  }
  /// The line equals its own message, but for a second that has just begun and a thread that it may have got.
  static void expectTrue(const Texts& lines, std::size_t count, bool namesCaller) {
    ASSERT_EQ(lines.size(), count);
    for (const std::string& line : lines) {
      const std::size_t middle = line.find(" - ");
      ASSERT_NE(middle, line.npos) << line;
      std::string shown = line.substr(0, middle), said = line.substr(middle + 3);
      const std::string clock = shown.substr(0, 8);
      const std::time_t second = std::stol(said);
      EXPECT_TRUE(clock == clockOf(second) || clock == clockOf(second + 1)) << line;
      if (!namesCaller) shown.erase(9, shown.find(']') - 9), said.erase(11, said.find(']') - 11);
      EXPECT_EQ(shown.substr(8), said.substr(10)) << line;
    }
  }

  const Deadline deadline{100};
  const TempDir dir;
  LOGPatternLayout layout{PATTERN}, behindLayout{PATTERN};
  LOGFileAppender direct{&layout, dir.file("direct").c_str()};
  LOGFileAppender behindCaller{&behindLayout, dir.file("caller").c_str()};
  LOGFileAppender behindDispatcher{&behindLayout, dir.file("dispatcher").c_str()};
  LOGAsyncAppender caller, dispatcher;
  LOGLevel notice{25000, "NOTICE", 5}, other{25000, "A LEVEL WITH A VERY LONG NAME", 5};
  Tree tree;
};

}  // namespace

// For more than a second, so that the beginnings of lines are made anew; with threads that come and go, and parents and
// levels that change meanwhile.
TEST_F(Caches, EveryLineShowsItsOwnEvent) {
  LOGLevel* const LEVELS[] = {LOGLevel::FATAL_OBJ, &notice, LOGLevel::ERROR_OBJ, &other, LOGLevel::WARN_OBJ};
  const char* const LOGGERS[] = {"direct", "direct.a", "caller.b.c", "dispatcher", "dispatcher.x.y.z", "caller"};
  std::mutex counting;
  std::map<std::string, std::size_t> counts;
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(1300);
  auto changing = std::make_unique<Meanwhile>(std::vector<std::function<void()>>{[this] {
    LOGLogger* const child = tree.getLogger("direct.a");
    LOGLogger* const parent = tree.getLogger("direct");
    child->setParent(parent);
    child->setLevel(LOGLevel::WARN_OBJ);
    child->setLevel(nullptr);
    parent->setLevel(LOGLevel::INFO_OBJ);
  }});
  while (std::chrono::steady_clock::now() < until) {
    onThreads(3, [&](int t) {
      for (long n = 0; n < 60; ++n) {
        const std::string logger = LOGGERS[(n + t) % 6];
        logOne(tree.getLogger(logger.c_str()), LEVELS[(n / 6 + t) % 5], n);
        const std::lock_guard<std::mutex> guard(counting);
        ++counts[logger.substr(0, logger.find('.'))];
      }
    });
  }
  changing.reset();
  caller.close();
  dispatcher.close();
  const auto logTwice = [&] {
    for (long n : {0, 1}) logOne(tree.getLogger("direct"), LOGLevel::WARN_OBJ, n);
  };
  EXPECT_EQ(statusInChild(logTwice), 0) << "whose thread has another number";
  counts["direct"] += 2;
  for (const auto& [name, count] : counts) expectTrue(linesOf(dir.file(name)), count, name != "dispatcher");
}
