// Helpers for tests with several threads.

#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace vrktest {

/// Runs body(0) to body(count - 1) at once, each on a thread of its own, and waits for them all.
inline void onThreads(int count, const std::function<void(int)>& body) {
  std::atomic<int> waiting{count};
  std::vector<std::thread> threads;
  for (int t = 0; t < count; ++t) {
    threads.emplace_back([&waiting, &body, t] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      body(t);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

/// Threads that do the same again and again until the scope ends. Each has done it once when the constructor returns.
class Meanwhile {
 public:
  explicit Meanwhile(const std::vector<std::function<void()>>& bodies) : m_starting(bodies.size()) {
    for (const auto& body : bodies) {
      m_threads.emplace_back([this, body] {
        body();
        --m_starting;
        while (!m_done) body();
      });
    }
    while (m_starting > 0) std::this_thread::yield();
  }
  ~Meanwhile() {
    m_done = true;
    for (std::thread& thread : m_threads) thread.join();
  }

 private:
  std::atomic<std::size_t> m_starting;
  std::atomic<bool> m_done{false};
  std::vector<std::thread> m_threads;
};

}  // namespace vrktest
