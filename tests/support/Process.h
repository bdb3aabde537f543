// Other processes, and the time that a test may take.

#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <thread>

namespace vrktest {

/// A hang cannot be taken back: SIGALRM ends the process of a test that takes longer.
class Deadline {
 public:
  explicit Deadline(unsigned seconds) { ::alarm(seconds); }
  ~Deadline() { ::alarm(0); }
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;
};

/// Looks until the condition holds. False when it still does not after ten seconds.
template <typename Condition>
bool eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

/// The exit status of a process, or minus the signal that ended it.
inline int statusOf(pid_t process) {
  int status = 0;
  if (::waitpid(process, &status, 0) != process) return -1000;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

/// Runs `body` in a forked child and returns its status: 0, 1 when an expectation in it failed, -SIGALRM when it took too
/// long.
inline int statusInChild(const std::function<void()>& body, unsigned seconds = 30) {
  const testing::TestResult& result = *testing::UnitTest::GetInstance()->current_test_info()->result();
  const int before = result.total_part_count();
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(seconds);
    body();
    ::_exit(result.total_part_count() == before ? 0 : 1);
  }
  return statusOf(child);
}

/// Runs `body` in a new process of this program and test, where nothing of the library has been used. Once in a test.
inline void expectInNewProcess(const std::function<void()>& body) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto run = [&] {
    body();
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

}  // namespace vrktest
