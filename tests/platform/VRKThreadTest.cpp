#include <pthread.h>
#include <sys/syscall.h>

#include "tests/support/Tests.h"

using namespace vrktest;

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
  const Deadline deadline(60);
  VRKThreadCriticalSection section;
  long counter = 0;
  // It cannot know that the lock may be taken twice.
  onThreads(4, [&](int) VRK_NO_THREAD_SAFETY_ANALYSIS {
    for (int i = 0; i < 10000; ++i) {
      const VRKThreadGuard outer(section);
      const long before = counter;
      { const VRKThreadGuard inner(section); }
      counter = before + 1;
    }
  });
  EXPECT_EQ(counter, 40000);
}

TEST(VRKThread, RunsJoinsAndStartsAgain) {
  const Deadline deadline(30);
  std::atomic<int> runs{0};
  std::atomic<bool> go{false};
  Runner* self = nullptr;
  Runner runner([&] {
    ++runs;
    while (!go) VRKThread::sleep(100);
    self->join();  // returns at once
    throw 7;       // ends the thread only
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

TEST(VRKThread, UnwindsWhenItIsCancelled) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the undefined-behaviour sanitizer takes the reference to a forced unwind for a null one";
#endif
  const Deadline deadline(30);
  std::atomic<pthread_t> thread{};
  Runner runner([&] {
    thread = ::pthread_self();
    for (;;) VRKThread::sleep(1000);
  });
  runner.start();
  ASSERT_TRUE(eventually([&] { return thread.load() != pthread_t{}; }));
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
    EXPECT_TRUE(::sigismember(&inside, signal) == 1 && ::sigismember(&after, signal) == 0) << signal;
  }
}

TEST(VRKThread, SleepsAtLeastAsLongAsAskedAndKnowsItsNumber) {
  const Deadline deadline(30);
  const auto begin = std::chrono::steady_clock::now();
  VRKStopSignal stop;
  for (const long microseconds : {0L, -1000000L, 20000L}) VRKThread::sleep(microseconds);
  EXPECT_FALSE(stop.wait(20000));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(40));
  std::thread waiting([&] { EXPECT_TRUE(stop.wait(3600LL * 1000000)); });
  stop.stop();
  waiting.join();
  EXPECT_TRUE(stop.wait(3600LL * 1000000)) << "for good";
  EXPECT_EQ(statusInChild([] { EXPECT_EQ(VRKThread::currentThreadId(), ::syscall(SYS_gettid)); }), 0);
}
