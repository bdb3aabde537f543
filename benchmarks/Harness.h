// Measures contenders in turn, and compares them.

#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace bench {

/// What every benchmark program understands:
///   --quick         just long enough to show that it works; the figures mean little
///   --csv FILE      appends a row for each single value: item,contender,repetition,value,unit
///   --summary FILE  appends the comparisons with a gate, as they are printed
struct Settings {
  bool quick = false;
  std::string csv;
  std::string summary;

  Settings(int argc, char** argv);

  /// As many, or few when quick.
  long count(long events) const { return quick ? events / 20 + 1 : events; }
};

/// A number that each run of a contender yields.
struct Item {
  std::string name;
  std::string unit;
};

/// Runs floors, peers and ours one after the other, then in the reverse order, and so on, so that whatever slows the
/// machine down meets all of them. What is reported are medians: of the values, and of the ratios within each
/// repetition.
class Comparison {
 public:
  enum Bound { AT_MOST, AT_LEAST };

  Comparison(const Settings& settings, std::vector<Item> items) : m_settings(settings), m_items(std::move(items)) {}

  /// `run` returns a value for each item. The first contender is what the table compares all others with.
  void add(const std::string& contender, std::function<std::vector<double>()> run);
  /// For one item.
  void add(const std::string& contender, std::function<double()> run);
  /// `contender`'s ratio to `against`, or its value when `against` is empty, is to stay within `limit`, better within
  /// `stretch` (0: there is none). Left out when one of them does not take part.
  void gate(const std::string& item, const std::string& contender, const std::string& against, Bound bound,
            double limit, double stretch = 0);
  /// Measures and prints.
  void run();

 private:
  struct Contender {
    std::string name;
    std::function<std::vector<double>()> run;
    std::vector<std::vector<double>> values;  // of each item, in the order of the repetitions
  };
  struct Gate {
    std::string item, contender, against;
    Bound bound;
    double limit, stretch;
  };

  const Contender* find(const std::string& name) const;
  std::vector<double> ratios(const Contender& contender, const Contender& against, std::size_t item) const;
  void printTable(std::size_t item) const;
  void printGate(const Gate& gate) const;
  void writeCsv() const;

  const Settings m_settings;
  const std::vector<Item> m_items;
  std::vector<Contender> m_contenders;
  std::vector<Gate> m_gates;
};

/// An empty folder beside the program, so that all files of all contenders are on the disk of the build tree.
class Folder {
 public:
  Folder();
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  /// A path that no file has yet.
  std::string newFile();
  const std::string& path() const { return m_path; }
  /// Ends the program when the newest file has not as many lines: a logger that loses events is fast.
  void expectLines(long count) const;

 private:
  std::string m_path;
  int m_files = 0;
};

double median(std::vector<double> values);
/// The value below which `share` of them lie; 0.5 is the median.
double quantile(std::vector<double> values, double share);

/// For intervals, in units of nanosecondsPerTick(): the processor's counter where there is one.
inline unsigned long long ticks() {
#if defined(__x86_64__) || defined(__i386__)
  return __builtin_ia32_rdtsc();
#else
  return static_cast<unsigned long long>(std::chrono::steady_clock::now().time_since_epoch().count());
#endif
}
double nanosecondsPerTick();

/// Keeps the compiler from moving or merging what is measured.
inline void fence() { asm volatile("" ::: "memory"); }

/// Makes call(0) to call(events - 1), one each `interval` nanoseconds. How long one takes, in nanoseconds: the
/// quantiles 0.5, 0.8, 0.99 and 0.999.
template <typename Call>
std::vector<double> pacedCalls(long events, double interval, Call call) {
  const double nanoseconds = nanosecondsPerTick();
  const auto step = static_cast<unsigned long long>(interval / nanoseconds);
  std::vector<double> calls;
  calls.reserve(static_cast<std::size_t>(events));
  unsigned long long next = ticks();
  for (long i = 0; i < events; ++i, next += step) {
    unsigned long long before = ticks();
    while (before < next) before = ticks();
    call(i);
    calls.push_back(static_cast<double>(ticks() - before) * nanoseconds);
  }
  return {quantile(calls, 0.5), quantile(calls, 0.8), quantile(calls, 0.99), quantile(calls, 0.999)};
}

/// Seconds until each of `threads` threads has made call(0) to call(events - 1), and then finish() has been called.
template <typename Call, typename Finish>
double seconds(int threads, long events, Call call, Finish finish) {
  std::atomic<int> ready{0};
  std::atomic<bool> go{false};
  std::vector<std::thread> others;
  for (int t = 1; t < threads; ++t) {
    others.emplace_back([&] {
      ++ready;
      while (!go) std::this_thread::yield();
      for (long i = 0; i < events; ++i) call(i);
    });
  }
  while (ready < threads - 1) std::this_thread::yield();
  const auto begin = std::chrono::steady_clock::now();
  go = true;
  for (long i = 0; i < events; ++i) call(i);
  for (std::thread& other : others) other.join();
  finish();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

template <typename Call>
double seconds(int threads, long events, Call call) {
  return seconds(threads, events, call, [] {});
}

}  // namespace bench
