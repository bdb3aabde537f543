// What a log call asks of the allocator and of mutexes. In a program of its own, because it replaces both.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "log4vrk/appenders/LOGAsyncAppender.h"
#include "log4vrk/appenders/LOGFileAppender.h"
#include "log4vrk/core/LOGManager.h"
#include "log4vrk/core/LOGMessage.h"
#include "log4vrk/layouts/LOGPatternLayout.h"
#include "tests/support/TempDir.h"

namespace {

// What an enabled, synchronous call to a file takes today. More is a fault; less is to be written down here.
constexpr long ENABLED_ALLOCATIONS = 0;
constexpr long ENABLED_LOCKS = 1;

std::atomic<long> allocations{0};
std::atomic<long> locks{0};

struct Counts {
  long allocations;
  long locks;
};

// For each call. What happens once a second, such as a new date, does not count.
template <typename Call>
Counts counted(Call call) {
  constexpr long CALLS = 1000;
  for (long i = 0; i < CALLS; ++i) call();  // what is made once is there now
  const Counts before{allocations, locks};
  for (long i = 0; i < CALLS; ++i) call();
  return {(allocations - before.allocations) / CALLS, (locks - before.locks) / CALLS};
}

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) {
  using Lock = int (*)(pthread_mutex_t*);
  static const auto lock = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
  ++locks;
  return lock(mutex);
}

TEST(Allocation, ADisabledCallNeitherAllocatesNorLocks) {
  LOGManager::getRootLogger()->setLevel(LOGLevel::INFO_OBJ);
  LOGLogger* const logger = LOGManager::getLogger("com.acme.Server");
  LOGObject message("a text that is too long for a string's own room");
  const Counts counts = counted([&] {
    LOG4VRK_DEBUG(logger, "request " << 123456 << " from "
                                     << "host-042.example.org");
    logger->debug(&message);
  });
  EXPECT_EQ(0, counts.allocations);
  EXPECT_EQ(0, counts.locks);
}

TEST(Allocation, AnEnabledCallHasAFixedPrice) {
  const vrktest::TempDir dir;
  LOGPatternLayout layout("%d [%t] %-5p %c - %m%n");
  LOGFileAppender appender(&layout, dir.file("log").c_str());
  LOGManager::getRootLogger()->addAppender(&appender);
  LOGLogger* const logger = LOGManager::getLogger("com.acme.Server");
  const Counts counts = counted([&] {
    LOG4VRK_INFO(logger, "request " << 123456 << " from "
                                    << "host-042.example.org"
                                    << " ok");
  });
  LOGManager::getRootLogger()->removeAppender(&appender);
  EXPECT_LT(0, counts.locks) << "the appender's lock, at least: is it still counted?";
  EXPECT_GE(ENABLED_ALLOCATIONS, counts.allocations);
  EXPECT_GE(ENABLED_LOCKS, counts.locks);
}

TEST(Allocation, ACallIntoAQueueAllocatesNothingOnEitherSide) {
  const vrktest::TempDir dir;
  LOGPatternLayout layout("%d [%t] %-5p %c - %m%n");
  LOGFileAppender file(&layout, dir.file("log").c_str());
  LOGAsyncAppender queue;
  queue.addAppender(&file);
  LOGManager::getRootLogger()->addAppender(&queue);
  LOGLogger* const logger = LOGManager::getLogger("com.acme.Server");
  const Counts counts = counted([&] { LOG4VRK_INFO(logger, "request " << 123456 << " from host-042.example.org ok"); });
  queue.close();
  LOGManager::getRootLogger()->removeAppender(&queue);
  EXPECT_EQ(0, counts.allocations);
}
