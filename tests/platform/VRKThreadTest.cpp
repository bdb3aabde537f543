#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/VRKThreadCriticalSection.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "tests/support/Process.h"

namespace {

class Runner : public VRKThread {
 public:
  explicit Runner(std::function<void()> body, std::size_t stack = 0) : VRKThread(stack), m_body(std::move(body)) {}
  ~Runner() override { Runner::join(); }
  void run() override { m_body(); }

 private:
  std::function<void()> m_body;
};

}  // namespace

TEST(VRKThreadCriticalSection, ExcludesOthersUntilItsOwnerHasLetGoAsOftenAsItTookIt) {
  const vrktest::Deadline deadline(60);
  VRKThreadCriticalSection section;
  long counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 10000; ++i) {
        const VRKThreadGuard outer(section);
        const long before = counter;
        { const VRKThreadGuard inner(section); }
        counter = before + 1;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 40000);
}

TEST(VRKThreadCriticalSection, ACopyIsFreeAndSoIsWhatCouldNotBeLocked) {
  const vrktest::Deadline deadline(30);
  VRKThreadCriticalSection held, refused;
  const VRKThreadGuard guard(held);
  VRKThreadCriticalSection copy(held), assigned;
  assigned = held;
  VRKFault::arm(VRKFault::LOCK);
  EXPECT_THROW(const VRKThreadGuard none(refused), VRKSystemError);
  VRKFault::disarm();
  std::thread([&] { const VRKThreadGuard one(copy), two(assigned), three(refused); }).join();
}

TEST(VRKThread, RunsJoinsAndStartsAgain) {
  const vrktest::Deadline deadline(30);
  std::atomic<int> runs{0};
  std::atomic<bool> go{false};
  Runner* self = nullptr;
  Runner runner([&] {
    ++runs;
    while (!go) VRKThread::sleep(100);
    self->join();  // returns at once
  });
  self = &runner;
  runner.join();
  EXPECT_FALSE(runner.isAlive());
  runner.start();
  runner.start();
  EXPECT_TRUE(runner.isAlive());
  go = true;
  std::thread other([&] { runner.join(); });
  runner.join();
  other.join();
  EXPECT_TRUE(runs == 1 && !runner.isAlive());
  runner.start();
  runner.join();
  EXPECT_EQ(runs, 2);
  EXPECT_THROW(Runner([] {}, std::size_t{1} << 60).start(), VRKSystemError) << "there is no such stack";
}

TEST(VRKThread, MayBeDestroyedByItsOwnThread) {
  static Runner* self;
  static std::atomic<bool> ended{false};
  self = new Runner([] {
    delete self;
    ended = true;
  });
  self->start();
  EXPECT_TRUE(vrktest::eventually([] { return ended.load(); }));
}

TEST(VRKThread, WhatRunRaisesEndsTheThreadOnly) {
  for (const std::function<void()>& body :
       {std::function<void()>([] { throw 7; }), {[] { throw std::runtime_error(""); }}}) {
    Runner runner(body);
    runner.start();
    runner.join();
    EXPECT_FALSE(runner.isAlive());
  }
}

TEST(VRKThread, UnwindsWhenItIsCancelled) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the undefined-behaviour sanitizer takes the reference to a forced unwind for a null one";
#endif
  const vrktest::Deadline deadline(30);
  std::atomic<pthread_t> thread{};
  Runner runner([&] {
    thread = ::pthread_self();
    for (;;) VRKThread::sleep(1000);
  });
  runner.start();
  ASSERT_TRUE(vrktest::eventually([&] { return thread.load() != pthread_t{}; }));
  ::pthread_cancel(thread);
  runner.join();
  EXPECT_FALSE(runner.isAlive());
}

TEST(VRKThread, LeavesSignalsToTheProgramsThreads) {
  sigset_t inside, after;
  Runner runner([&] { ::pthread_sigmask(SIG_SETMASK, nullptr, &inside); }, 256 * 1024);
  runner.start();
  runner.join();
  ::pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGCHLD, SIGUSR1, SIGALRM, SIGPIPE, SIGRTMIN, SIGRTMAX}) {
    EXPECT_EQ(::sigismember(&inside, signal), 1) << signal;
    EXPECT_EQ(::sigismember(&after, signal), 0) << signal;
  }
}

TEST(VRKThread, SleepsAtLeastAsLongAsAskedAndKnowsItsNumber) {
  const auto begin = std::chrono::steady_clock::now();
  for (const long microseconds : {0L, -1000000L, 20000L}) VRKThread::sleep(microseconds);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
  VRKFault::arm(VRKFault::SLEEP);
  EXPECT_THROW(VRKThread::sleep(1), VRKSystemError);
  VRKFault::disarm();

  const auto expectOwnNumber = [] { EXPECT_EQ(VRKThread::currentThreadId(), ::syscall(SYS_gettid)); };
  expectOwnNumber();
  std::thread(expectOwnNumber).join();
  EXPECT_EQ(vrktest::statusInChild(expectOwnNumber), 0);
}

TEST(VRKStopSignal, EndsAWaitForGood) {
  const vrktest::Deadline deadline(30);
  VRKStopSignal signal;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(signal.wait(10000));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(10));
  std::thread waiting([&] { EXPECT_TRUE(signal.wait(3600LL * 1000000)); });
  signal.stop();
  waiting.join();
  EXPECT_TRUE(signal.wait(3600LL * 1000000));
}
