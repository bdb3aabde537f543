// Helpers for tests that start processes, and the deadline of a test.

#pragma once

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iterator>
#include <new>
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
inline pid_t startProgram(std::vector<std::string> command) {
  command.insert(command.begin(), {"setpriv", "--pdeathsig", "KILL"});  // becomes the program
  std::vector<char*> arguments;
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  pid_t process = -1;
  EXPECT_EQ(0, ::posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments.data(), environ));
  return process;
}

/// How many descriptors this process has open.
inline long openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

inline long threadsOfProcess() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), std::filesystem::directory_iterator());
}

/// A loopback address of this process alone, so that no other test's receiver hears what it sends.
inline std::string ownAddress() {
  const int id = ::getpid();
  return "127." + std::to_string(1 + id / 64516 % 254) + "." + std::to_string(id / 254 % 254) + "." +
         std::to_string(1 + id % 254);
}

/// Runs `body` in a forked child, which dies with the thread that forked it. Its status is 0, or 1 when an
/// expectation in it failed.
inline pid_t startChild(const std::function<void()>& body) {
  const testing::TestResult& result = *testing::UnitTest::GetInstance()->current_test_info()->result();
  const int before = result.total_part_count();
  const pid_t child = ::fork();
  if (child != 0) return child;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  body();
  ::_exit(result.total_part_count() == before ? 0 : 1);
}

/// The same, and waits: the child's status, -SIGALRM when it took too long.
inline int statusInChild(const std::function<void()>& body, unsigned seconds = 30) {
  return statusOf(startChild([&] {
    ::alarm(seconds);
    body();
  }));
}

/// Memory that forked children share, all zero, until the process ends.
template <typename T>
T& sharedWithChildren() {
  void* const memory = ::mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return *static_cast<T*>(memory);
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
