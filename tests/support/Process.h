// Other processes, and the time that a test may take.

#pragma once

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace vrktest {

/// A hang cannot be taken back: SIGALRM ends the process of a test that takes longer.
class Deadline {
 public:
  explicit Deadline(unsigned seconds) { ::alarm(seconds); }
  ~Deadline() { ::alarm(0); }
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;
};

/// Looks until the condition holds. False when it still does not after so many seconds.
template <typename Condition>
bool eventually(Condition condition, int seconds = 10) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
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

/// Starts a program, which dies with the thread that started it.
inline pid_t startProgram(const std::vector<std::string>& command) {
  const pid_t child = ::fork();
  if (child != 0) return child;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::vector<char*> arguments;
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  ::execv(arguments[0], arguments.data());
  ::_exit(127);
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
