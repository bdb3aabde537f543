#include "log4vrk/platform/VRKThread.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <ctime>
#include <mutex>

#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKFork.h"

namespace {

class AllSignalsBlocked {
 public:
  AllSignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &m_before);
  }
  ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

 private:
  sigset_t m_before;
};

__thread long t_threadId __attribute__((tls_model("initial-exec"))) = 0;

std::atomic<unsigned> g_forks{0};  // how many forks lie between the first process and this one

// The child of a fork is another thread than the one it was copied from, and the only one.
void beginInChild() {
  t_threadId = 0;
  ++g_forks;
}

[[maybe_unused]] const bool g_forkHandled = (vrkAtFork(nullptr, nullptr, &beginInChild), true);

}  // namespace

struct VRKThread::State {
  explicit State(std::size_t stack) : stackSize(stack) {}

  static void* main(void* argument) {
    const std::unique_ptr<std::pair<VRKThread*, std::shared_ptr<State>>> self(
        static_cast<std::pair<VRKThread*, std::shared_ptr<State>>*>(argument));
    struct AliveNoMore {
      State& state;
      ~AliveNoMore() { state.alive = false; }
    } const ending{*self->second};
    self->second->threadId = currentThreadId();
    try {
      self->first->run();
    }
    VRK_RETHROW_FORCED_UNWIND
    catch (...) {
      // Whoever runs on this thread has reported it; nobody is left to hear of it here.
    }
    return nullptr;
  }

  const std::size_t stackSize;
  std::atomic<bool> alive{false};
  std::atomic<long> threadId{0};
  std::mutex mutex;  // held over start and join, so that a thread is joined once
  bool started = false;
  pthread_t thread{};
  const unsigned forks = g_forks;  // in another process the thread does not exist, and the mutex may be held for ever
};

VRKThread::VRKThread(std::size_t stackSize) : m_state(std::make_shared<State>(stackSize)) {}

VRKThread::~VRKThread() {
  if (m_state->forks != g_forks) return;
  const std::lock_guard<std::mutex> guard(m_state->mutex);
  if (m_state->started) pthread_detach(m_state->thread);
}

void VRKThread::start() {
  const std::lock_guard<std::mutex> guard(m_state->mutex);
  if (m_state->started) return;
  auto argument = std::make_unique<std::pair<VRKThread*, std::shared_ptr<State>>>(this, m_state);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  if (m_state->stackSize != 0) pthread_attr_setstacksize(&attributes, m_state->stackSize);
  m_state->alive = true;
  int error;
  {
    const AllSignalsBlocked inherited;
    error = pthread_create(&m_state->thread, &attributes, &State::main, argument.get());
  }
  pthread_attr_destroy(&attributes);
  if (error != 0) {
    m_state->alive = false;
    throw VRKSystemError(error, "thread", VRK_HERE);
  }
  static_cast<void>(argument.release());
  m_state->started = true;
}

void VRKThread::join() {
  const std::shared_ptr<State> state = m_state;
  if (state->forks != g_forks) return;
  if (state->alive && state->threadId == currentThreadId()) return;
  const std::lock_guard<std::mutex> guard(state->mutex);
  if (!state->started) return;
  pthread_join(state->thread, nullptr);
  state->started = false;
}

bool VRKThread::isAlive() const { return m_state->alive && m_state->forks == g_forks; }

unsigned VRKThread::forks() { return g_forks; }

void VRKThread::sleep(long microseconds) {
  if (VRKFault::hit(VRKFault::SLEEP)) throw VRKSystemError(EINTR, "sleep", VRK_HERE);
  if (microseconds <= 0) return;
  timespec left{static_cast<time_t>(microseconds / 1000000), (microseconds % 1000000) * 1000};
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

long VRKThread::currentThreadId() {
  if (t_threadId == 0) t_threadId = static_cast<long>(syscall(SYS_gettid));
  return t_threadId;
}

struct VRKStopSignal::State {
  std::mutex mutex;
  std::condition_variable changed;
  bool stopped = false;
};

VRKStopSignal::VRKStopSignal() : m_state(std::make_unique<State>()) {}
VRKStopSignal::~VRKStopSignal() = default;

bool VRKStopSignal::wait(long long microseconds) {
  // A moment further away than the clock can count would be one that has passed.
  constexpr long long LONGEST = 100LL * 365 * 24 * 3600 * 1000000;
  const auto time = std::chrono::microseconds(std::min(microseconds, LONGEST));
  std::unique_lock<std::mutex> lock(m_state->mutex);
  return m_state->changed.wait_for(lock, time, [this] { return m_state->stopped; });
}

void VRKStopSignal::stop() {
  const std::lock_guard<std::mutex> guard(m_state->mutex);
  m_state->stopped = true;
  m_state->changed.notify_all();
}
