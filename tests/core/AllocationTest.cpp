// How often a log call allocates and takes mutexes. This is a program of its own, because it replaces the functions of
// both.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

#include "log4vrk/appenders/LOGAsyncAppender.h"
#include "log4vrk/appenders/LOGDurableAsyncAppender.h"
#include "log4vrk/appenders/LOGFileAppender.h"
#include "log4vrk/core/LOGFieldMacros.h"
#include "log4vrk/core/LOGManager.h"
#include "log4vrk/format.h"
#include "log4vrk/layouts/LOGJSONLayout.h"
#include "log4vrk/layouts/LOGPatternLayout.h"
#include "tests/support/TempDir.h"

namespace {

std::atomic<long> allocations{0};
std::atomic<long> locks{0};

// Unknown to the compiler, which would complain that what comes from new is freed by free().
void (*volatile release)(void*) = &std::free;

using Counts = std::pair<long, long>;  // allocations and locks

// For each call. What happens once a second, such as a new date, does not count.
template <typename Call>
Counts counted(Call call) {
  constexpr long CALLS = 1000;
  for (long i = 0; i < CALLS; ++i) call();  // what is made once is there now
  const Counts before(allocations, locks);
  for (long i = 0; i < CALLS; ++i) call();
  return {(allocations - before.first) / CALLS, (locks - before.second) / CALLS};
}

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { release(memory); }

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
  const std::string text = "a text that is too long for a string's own room";
  const auto call = [&] {
    LOG4VRK_DEBUG(logger, "request " << 123456 << " from host-042.example.org");
    LOG4VRK_DEBUG_KV(logger, "request " << 123456, "host", text, "total", 17.5);
    logger->debug(&message);
    logger->debug("a text that is too long for a string's own room");
    logger->debug(u"a text that is too long for a string's own room");
    logger->l7dlog(LOGLevel::DEBUG_OBJ, "a text that is too long for a string's own room");
    logger->log(LOGLevel::DEBUG_OBJ, text);
  };
  EXPECT_EQ(counted(call), Counts(0, 0));
}

// Another price, also a lower one, is to be written down here.
TEST(Allocation, AnEnabledCallTakesTheFilesLockOnlyAndAQueueAllocatesNothingOnEitherSide) {
  const vrktest::TempDir dir;
  LOGPatternLayout layout("%d [%t] %-5p %c - %m%n");
  LOGFileAppender file(&layout, dir.file("log").c_str());
  LOGAsyncAppender queue;
  LOGLogger* const logger = LOGManager::getLogger("com.acme.Server");
  const auto call = [&] { LOG4VRK_INFO(logger, "request " << 123456 << " from host-042.example.org ok"); };
  logger->addAppender(&file);
  EXPECT_EQ(counted(call), Counts(0, 1));
  const std::string text = "accepted by \u00fc";
  EXPECT_EQ(counted([&] { logger->info(text); }), Counts(0, 1));
  EXPECT_EQ(counted([&] { logger->info("an order that was accepted"); }), Counts(0, 1));
  LOGJSONLayout json;
  file.setLayout(&json);
  EXPECT_EQ(counted(call), Counts(0, 1));
  logger->removeAppender(&file);
  queue.addAppender(&file);
  logger->addAppender(&queue);
  EXPECT_EQ(counted(call).first, 0);
  EXPECT_EQ(counted([&] { LOG4VRK_INFO_F(logger, "request {} from {} ok", 123456, text); }).first, 0);
  const auto fields = [&] {
    LOG4VRK_CONTEXT("order", 17, "customer", "anna");
    LOG4VRK_INFO_KV(logger, "request", "number", 123456, "host", "host-042.example.org", "total", 17.5);
  };
  EXPECT_EQ(counted(fields).first, 0);
  logger->removeAppender(&queue);
  queue.close();
  LOGDurableAsyncAppender durable;
  durable.setName("durable");
  durable.setDirectory(dir.file("queues").c_str());
  durable.addAppender(&file);
  logger->addAppender(&durable);
  EXPECT_EQ(counted(call).first, 0);
  EXPECT_EQ(counted(fields).first, 0);
  logger->removeAppender(&durable);
  durable.close();
}
