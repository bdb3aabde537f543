#include <pthread.h>
#include <sys/syscall.h>

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

using VRKThreadTest = TreeTest;

struct Runner : VRKThread {
  explicit Runner(std::function<void()> what, std::size_t stack = 0) : VRKThread(stack), body(std::move(what)) {}
  ~Runner() override { Runner::join(); }
  void run() override { body(); }

  const std::function<void()> body;
};

}  // namespace

TEST_F(VRKThreadTest, ACriticalSectionIsOnesOwnUntilItIsLeftAsOftenAsItWasEntered) {
  VRKThreadCriticalSection section;
  long counter = 0;
  // The analysis cannot know that the lock may be taken twice.
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

TEST_F(VRKThreadTest, RunsJoinsAndStartsAgain) {
  std::atomic<int> runs{0};
  std::atomic<bool> go{false};
  Runner runner([&] {
    ++runs;
    while (!go) VRKThread::sleep(100);
    runner.join();  // returns at once
    throw 7;        // ends the thread only
  });
  runner.join();
  EXPECT_FALSE(runner.isAlive());
  runner.start();
  runner.start();
  EXPECT_TRUE(runner.isAlive());
  go = true;
  onThreads(2, [&](int) { runner.join(); });
  EXPECT_TRUE(runs == 1 && !runner.isAlive());
  runner.start();
  runner.join();
  EXPECT_EQ(runs, 2);
  EXPECT_THROW(Runner([] {}, std::numeric_limits<std::size_t>::max() - 65535).start(), VRKSystemError)
      << "there is no such stack";
}

// Another key of the program would be written to if the library took the number that it did not get.
TEST_F(VRKThreadTest, ThreadsOfAProgramThatHasUsedUpTheKeysMayLog) {
  expectInNewProcess([] {
    std::vector<pthread_key_t> keys;
    for (pthread_key_t key; ::pthread_key_create(&key, nullptr) == 0;) keys.push_back(key);
    std::thread([&] {
      LOGManager::getLogger("a")->info(I18NString("text").c_str());
      for (const pthread_key_t key : keys) ASSERT_EQ(::pthread_getspecific(key), nullptr);
    }).join();
  });
}

TEST_F(VRKThreadTest, LeavesSignalsToTheProgramsThreads) {
  sigset_t inside, after;
  Runner runner([&] { ::pthread_sigmask(SIG_SETMASK, nullptr, &inside); }, 256 * 1024);
  runner.start();
  runner.join();
  ::pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGCHLD, SIGUSR1, SIGALRM, SIGPIPE, SIGRTMIN, SIGRTMAX}) {
    EXPECT_TRUE(::sigismember(&inside, signal) == 1 && ::sigismember(&after, signal) == 0) << signal;
  }
}

TEST_F(VRKThreadTest, SleepsAtLeastAsLongAsAskedAndKnowsItsNumber) {
  const auto begin = std::chrono::steady_clock::now();
  VRKStopSignal stop;
  for (const long microseconds : {0L, -1000000L, 20000L}) VRKThread::sleep(microseconds);
  EXPECT_FALSE(stop.wait(20000));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(40));
  std::thread waiting([&] { EXPECT_TRUE(stop.wait(std::numeric_limits<long long>::max())); });
  stop.stop();
  waiting.join();
  EXPECT_TRUE(stop.wait(3600LL * 1000000)) << "for good";
  EXPECT_EQ(statusInChild([] { EXPECT_EQ(VRKThread::currentThreadId(), ::syscall(SYS_gettid)); }), 0);
}

// Where the cancellation meets a call that may be cancelled, which sleeping and writing to the internal log are.
TEST_F(VRKThreadTest, UnwindsWhenItIsCancelledAndLeavesNoLockBehind) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers do not follow a forced unwind; the release build does";
#endif
  const auto cancelled = [] { ::pthread_cancel(::pthread_self()); };
  root.onAppend = [&](const std::string& text) {
    cancelled();
    if (text == "fails") throw VRKThrowable("angry", VRK_HERE);
    VRKThread::sleep(1000);
  };
  const std::function<void()> CALLS[] = {
      [&] { logger->info("fails"); },
      [&] { logger->info("sleeps"); },
      [&] {
        cancelled();
        LOG4VRKConfigurator::initialize("/no/such/document.xml");
      },
      [&] {
        cancelled();
        tree.getLogger("made.by.a.cancelled.thread");
      },
  };
  for (const auto& call : CALLS) {
    bool ended = false;
    Runner runner([&] {
      call();
      ::pthread_testcancel();
      ended = true;
    });
    runner.start();
    runner.join();
    EXPECT_FALSE(ended);
  }
  root.onAppend = nullptr;
  logger->info("goes on");
  EXPECT_EQ(root.texts.back(), "goes on");
  EXPECT_EQ(log.count("angry"), 1);
  EXPECT_EQ(log.count("Could not parse the document"), 1);
  EXPECT_EQ(tree.getLogger("made.by.a.cancelled")->getParent(), tree.getRootLogger());
  EXPECT_EQ(tree.getLogger("made.by.a.cancelled.thread")->getParent(), tree.exists("made.by.a.cancelled"));
}
