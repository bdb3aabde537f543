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

  /// Logs what the line has to look like behind its date, by a text that is put together or by an object.
  static void logOne(LOGLogger* logger, LOGLevel* level, long n) {
    const std::string name = logger->getName().toUtf8(), last = name.substr(name.rfind('.') + 1);
    const std::string levelName = level->toString().toUtf8();
    const std::string text = clockOf(std::time(nullptr)) + " [" + std::to_string(VRKThread::currentThreadId()) + "] " +
                             levelName + std::string(levelName.size() < 5 ? 5 - levelName.size() : 0, ' ') + " " +
                             last + ":" + name;
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
      if (shown.substr(0, 8) != said.substr(0, 8)) {
        EXPECT_EQ(shown.substr(0, 8), clockOf(secondAfter(said.substr(0, 8)))) << line;
      }
      if (!namesCaller) shown.erase(9, shown.find(']') - 9), said.erase(9, said.find(']') - 9);
      EXPECT_EQ(shown.substr(8), said.substr(8)) << line;
    }
  }
  static std::time_t secondAfter(const std::string& clock) {
    return std::stol(clock.substr(0, 2)) * 3600 + std::stol(clock.substr(3, 2)) * 60 + std::stol(clock.substr(6)) + 1;
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
  const Meanwhile changing({[this] {
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
  caller.close();
  dispatcher.close();
  for (const auto& [name, count] : counts) expectTrue(linesOf(dir.file(name)), count, name != "dispatcher");
}

// Whatever a logger remembers of what is enabled is forgotten when any of it changes, while other threads ask, too.
TEST_F(Caches, WhatIsEnabledFollowsLevelParentAndThreshold) {
  // Loggers of a derived class's repository remember nothing.
  LOGHierarchy exact(new LOGRootLogger(LOGLevel::DEBUG_OBJ));
  LOGLogger* const child = exact.getLogger("p.q.child");
  LOGLogger* const parents[] = {exact.getLogger("p"), exact.getLogger("p.q"), exact.getLogger("elsewhere")};
  LOGLevel* const LEVELS[] = {nullptr, LOGLevel::DEBUG_OBJ, LOGLevel::WARN_OBJ, LOGLevel::OFF_OBJ, &notice};
  const Meanwhile asking({[&] { static_cast<void>(child->isDebugEnabled()); }});
  const auto expectEnabled = [&](int lowest) {
    for (LOGLevel* level : {LOGLevel::DEBUG_OBJ, LOGLevel::INFO_OBJ, &notice, LOGLevel::FATAL_OBJ}) {
      EXPECT_EQ(child->isEnabledFor(level), level->toInt() >= lowest) << level->toInt() << " of " << lowest;
    }
  };
  for (int run = 0; run < 200; ++run) {
    for (std::size_t p = 0; p < 3; ++p) parents[p]->setLevel(LEVELS[1 + (static_cast<std::size_t>(run) + p) % 4]);
    LOGLogger* const parent = parents[run % 3];
    LOGLevel* const own = LEVELS[run % 5];
    child->setParent(parent);
    child->setLevel(own);
    const int lowest = (own != nullptr ? own : parent->getLevel())->toInt();
    expectEnabled(lowest);
    exact.setThreshold(LOGLevel::ERROR_OBJ);
    expectEnabled(std::max(lowest, LOGLevel::ERROR_OBJ->toInt()));
    exact.setThreshold(LOGLevel::ALL_OBJ);
    child->setLevel(nullptr);
    for (LOGLogger* const next : parents) {
      child->setParent(next);
      expectEnabled(next->getLevel()->toInt());
    }
  }
}
