// What the library does when there is no memory. In a program of its own, because it replaces the allocator.

#include <array>
#include <new>

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

// While it is on, so many allocations from that numbered `first` on fail, on whichever thread.
struct Shortage {
  bool hits() {
    if (!on.load(std::memory_order_relaxed)) return false;
    const long number = ++made;
    if (number < first || number - first >= length) return false;
    *met = true;
    return true;
  }

  long first = 0, length = 1;
  std::atomic<bool>* met = nullptr;
  std::atomic<bool> on{false};
  std::atomic<long> made{0};
};

Shortage g_shortage;

void* allocate(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
  if (g_shortage.hits()) return nullptr;
  return std::aligned_alloc(alignment, (std::max<std::size_t>(size, 1) + alignment - 1) / alignment * alignment);
}

void* allocated(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

void* operator new(std::size_t size) { return allocated(allocate(size)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocated(allocate(size, static_cast<std::size_t>(alignment)));
}
void* operator new[](std::size_t size) { return allocated(allocate(size)); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

constexpr char DOCUMENT[] = R"(<log4j:configuration threshold='ALL'>
  <appender name='file' class='FileAppender'><param name='File' value='@/file.log'/>
    <layout class='PatternLayout'><param name='ConversionPattern' value='%d %-5p [%t] %c %x - %m%n'/></layout>
    <filter class='StringMatchFilter'><param name='StringToMatch' value='no such text'/></filter>
    <errorHandler class='LOGOnlyOnceErrorHandler'><logger-ref ref='shop.handler'/></errorHandler></appender>
  <appender name='rolling' class='RollingFileAppender'><param name='File' value='@/rolling.log'/>
    <param name='MaximumFileSize' value='100'/><layout class='TTCCLayout'/></appender>
  <appender name='behind' class='FileAppender'><param name='File' value='@/behind.log'/>
    <layout class='XMLLayout'/></appender>
  <appender name='queue' class='AsyncAppender'><appender-ref ref='behind'/></appender>
  <logger name='shop.orders'><level value='DEBUG'/><appender-ref ref='file'/><appender-ref ref='rolling'/></logger>
  <logger name='shop.stock'><appender-ref ref='queue'/></logger>
  <root><level value='INFO'/><appender-ref ref='file'/></root></log4j:configuration>)";

// The library's own errors may come out of a call, and nothing else.
template <typename Operation>
void attempt(Operation operation) {
  try {
    operation();
  } catch (const VRKThrowable&) {
  }
}

// What a program does in its life. Everything of its own is made before, since its own allocations are its own affair.
// So is the XML parser, which has to be initialised with memory.
struct Life {
  explicit Life(const TempDir& dir)
      : document(dir.write("log.xml", replaced(DOCUMENT, "@", dir.path())).c_str()),
        object("an object of the program") {
    object.instance("Order");
    VRKIDOM_Parser().parse(document.c_str());
  }

  void live() {
    attempt([&] { configure(); });
    for (const I18NString& name : names) {
      LOGLogger* logger = nullptr;
      attempt([&] { logger = LOGManager::getLogger(name); });
      if (logger == nullptr) continue;
      EXPECT_TRUE(logger->isInfoEnabled());
      attempt([&] { LOGNDC::push(text); });
      for (int i = 0; i < 2; ++i) {
        logger->info(text);
        logger->error(&object);
      }
      attempt([&] { LOGNDC::pop(); });
    }
    attempt([&] { delete LOGManager::getCurrentLoggers(); });
  }

  int configure() const { return LOG4VRKConfigurator::initialize(document); }

  const I18NString document;
  LOGObject object;
  const I18NString text = "a text that is longer than the room that a text has of its own";
  const std::vector<I18NString> names = {"shop.orders", "shop.stock", "shop.orders.new.and.deep", "shop.orders.new"};
};

// With memory again every lock is free and everything works, on another thread too.
void expectAllIsWell(const Life& life, const TempDir& dir) {
  onThreads(1, [&](int) {
    ASSERT_EQ(life.configure(), 1);
    LOGLogger* const parent = LOGManager::getLogger("shop.orders.new");
    EXPECT_EQ(parent->getParent(), LOGManager::getLogger("shop.orders"));
    EXPECT_EQ(LOGManager::getLogger("shop.orders.new.and.deep")->getParent(), parent);
    LOGManager::getLogger("shop.stock")->info("into the queue");
    parent->info("no such text in the file");
    LOG4VRKConfigurator::shutdown();
  });
  EXPECT_NE(dir.read("file.log").find("shop.orders.new  - no such text in the file\n"), std::string::npos);
}

// Runs `scenario` in a process of its own for every `step`th allocation that can fail, until one has not met the
// shortage; some at a time, since they wait more than they work. The scenario switches the shortage on and off.
void forEveryAllocation(long step, const std::function<void()>& scenario) {
  constexpr std::size_t AT_ONCE = 8;
  static auto& met = sharedWithChildren<std::array<std::atomic<bool>, AT_ONCE>>();
  bool all = true;
  for (long first = 1; all;) {
    std::array<pid_t, AT_ONCE> children;
    for (std::size_t i = 0; i < AT_ONCE; ++i) {
      met[i] = false;
      g_shortage.first = first + static_cast<long>(i) * step;
      g_shortage.met = &met[i];
      children[i] = startChild([&]() noexcept {
        ::alarm(30);
        scenario();
      });
    }
    for (std::size_t i = 0; i < AT_ONCE; ++i) {
      EXPECT_EQ(statusOf(children[i]), 0) << "allocation " << first + static_cast<long>(i) * step;
      all = all && met[i];
    }
    first += static_cast<long>(AT_ONCE) * step;
  }
}

}  // namespace

struct OutOfMemory : testing::TestWithParam<long> {};

TEST_P(OutOfMemory, EndsNoProcessHoldsNoLockAndIsOverWhenThereIsMemoryAgain) {
  const Deadline deadline(110);
  g_shortage.length = GetParam();
  forEveryAllocation(GetParam() == 1 ? 1 : 5, [] {
    const TempDir dir;
    Life life(dir);
    g_shortage.on = true;
    life.live();
    if (g_shortage.first % 2 == 0) LOG4VRKConfigurator::shutdown();
    g_shortage.on = false;
    expectAllIsWell(life, dir);
  });
}

// How many allocations fail in a row.
INSTANTIATE_TEST_SUITE_P(InARow, OutOfMemory, testing::Values(1, 20, 500), testing::PrintToStringParamName());

// An initialisation of the parser that has failed is not repeated.
TEST(OutOfMemoryAtFirst, InTheFirstDocumentEndsNoProcess) {
  const Deadline deadline(110);
  forEveryAllocation(31, [] {
    const TempDir dir;
    const std::string path = dir.write("log.xml", "<log4j:configuration/>");
    g_shortage.on = true;
    attempt([&] { VRKIDOM_Parser().parse(path.c_str()); });
    g_shortage.on = false;
    try {
      VRKIDOM_Parser().parse(path.c_str());
    } catch (const VRKThrowable& error) {
      EXPECT_EQ(error.getText(), (path + ": the XML parser ran out of memory when it was initialised").c_str());
    }
  });
}
