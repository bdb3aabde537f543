#include "benchmarks/Harness.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace bench {

namespace {

constexpr int REPETITIONS = 7;
constexpr int QUICK_REPETITIONS = 2;

std::string format(const char* pattern, double value) {
  char text[64];
  // NOLINTNEXTLINE(clang-diagnostic-format-nonliteral): the callers are below
  std::snprintf(text, sizeof text, pattern, value);
  return text;
}

// Three digits or so that count, whatever the magnitude.
std::string digits(double value) { return format(value < 1 ? "%.3f" : value < 100 ? "%.2f" : "%.0f", value); }

}  // namespace

Settings::Settings(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--quick") {
      quick = true;
    } else if (argument == "--csv" && i + 1 < argc) {
      csv = argv[++i];
    } else if (argument == "--summary" && i + 1 < argc) {
      summary = argv[++i];
    } else {
      std::fprintf(stderr, "usage: %s [--quick] [--csv FILE] [--summary FILE]\n", argv[0]);
      std::exit(2);
    }
  }
}

void Comparison::add(const std::string& contender, std::function<std::vector<double>()> run) {
  m_contenders.push_back({contender, std::move(run), std::vector<std::vector<double>>(m_items.size())});
}

void Comparison::add(const std::string& contender, std::function<double()> run) {
  add(contender, std::function<std::vector<double>()>([run = std::move(run)] { return std::vector<double>{run()}; }));
}

void Comparison::gate(const std::string& item, const std::string& contender, const std::string& against, Bound bound,
                      double limit, double stretch) {
  m_gates.push_back({item, contender, against, bound, limit, stretch});
}

void Comparison::run() {
  const int repetitions = m_settings.quick ? QUICK_REPETITIONS : REPETITIONS;
  for (int repetition = 0; repetition < repetitions; ++repetition) {
    for (std::size_t i = 0; i < m_contenders.size(); ++i) {
      Contender& contender = m_contenders[repetition % 2 == 0 ? i : m_contenders.size() - 1 - i];
      const std::vector<double> values = contender.run();
      for (std::size_t item = 0; item < m_items.size(); ++item) contender.values[item].push_back(values.at(item));
    }
  }
  for (std::size_t item = 0; item < m_items.size(); ++item) printTable(item);
  for (const Gate& gate : m_gates) printGate(gate);
  std::printf("\n");
  std::fflush(stdout);
  writeCsv();
}

const Comparison::Contender* Comparison::find(const std::string& name) const {
  for (const Contender& contender : m_contenders) {
    if (contender.name == name) return &contender;
  }
  return nullptr;
}

std::vector<double> Comparison::ratios(const Contender& contender, const Contender& against, std::size_t item) const {
  std::vector<double> result;
  for (std::size_t i = 0; i < contender.values[item].size(); ++i) {
    result.push_back(contender.values[item][i] / against.values[item][i]);
  }
  return result;
}

void Comparison::printTable(std::size_t item) const {
  const Contender& floor = m_contenders.front();
  std::printf("%s, %s\n", m_items[item].name.c_str(), m_items[item].unit.c_str());
  std::printf("  %-18s %12s %12s %12s   / %s\n", "", "median", "least", "most", floor.name.c_str());
  for (const Contender& contender : m_contenders) {
    const std::vector<double>& values = contender.values[item];
    std::printf("  %-18s %12s %12s %12s   %s\n", contender.name.c_str(), digits(median(values)).c_str(),
                digits(*std::min_element(values.begin(), values.end())).c_str(),
                digits(*std::max_element(values.begin(), values.end())).c_str(),
                digits(median(ratios(contender, floor, item))).c_str());
  }
}

void Comparison::printGate(const Gate& gate) const {
  const Contender* const contender = find(gate.contender);
  const Contender* const against = find(gate.against);
  if (contender == nullptr || (against == nullptr && !gate.against.empty())) return;
  const auto found =
      std::find_if(m_items.begin(), m_items.end(), [&](const Item& item) { return item.name == gate.item; });
  const auto item = static_cast<std::size_t>(found - m_items.begin());
  const double value = median(against != nullptr ? ratios(*contender, *against, item) : contender->values.at(item));
  const auto within = [&](double limit) { return gate.bound == AT_MOST ? value <= limit : value >= limit; };
  const char* const met = !within(gate.limit) ? "NO" : gate.stretch != 0 && within(gate.stretch) ? "stretch" : "yes";

  char line[160];
  std::snprintf(line, sizeof line, "%-9s %-34s %8s   %s %-6s %7s   %s\n", gate.item.c_str(),
                (gate.contender + (against != nullptr ? " / " + gate.against : ", " + found->unit)).c_str(),
                digits(value).c_str(), gate.bound == AT_MOST ? "<=" : ">=", digits(gate.limit).c_str(),
                gate.stretch != 0 ? digits(gate.stretch).c_str() : "-", met);
  std::fputs(line, stdout);
  if (!m_settings.summary.empty()) std::ofstream(m_settings.summary, std::ios::app) << line;
}

void Comparison::writeCsv() const {
  if (m_settings.csv.empty()) return;
  std::ofstream out(m_settings.csv, std::ios::app);
  for (std::size_t item = 0; item < m_items.size(); ++item) {
    for (const Contender& contender : m_contenders) {
      for (std::size_t i = 0; i < contender.values[item].size(); ++i) {
        out << m_items[item].name << ',' << contender.name << ',' << i + 1 << ',' << contender.values[item][i] << ','
            << m_items[item].unit << '\n';
      }
    }
  }
}

Folder::Folder() {
  std::string path = std::filesystem::read_symlink("/proc/self/exe").string() + ".XXXXXX";
  if (mkdtemp(path.data()) == nullptr) {
    std::perror(path.c_str());
    std::exit(1);
  }
  m_path = path;
}

Folder::~Folder() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

// What the run before has written goes, lest the disk fills up.
std::string Folder::newFile() {
  for (const auto& entry : std::filesystem::directory_iterator(m_path)) std::filesystem::remove_all(entry.path());
  return m_path + "/log" + std::to_string(++m_files);
}

void Folder::expectLines(long count) const {
  std::ifstream file(m_path + "/log" + std::to_string(m_files), std::ios::binary);
  const long found = std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n');
  if (found == count) return;
  std::fprintf(stderr, "%ld events were logged and %ld written\n", count, found);
  std::exit(1);
}

double median(std::vector<double> values) { return quantile(std::move(values), 0.5); }

double quantile(std::vector<double> values, double share) {
  if (values.empty()) return 0;
  const auto at = values.begin() + std::lround(share * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), at, values.end());
  return *at;
}

double nanosecondsPerTick() {
  static const double ratio = [] {
    const auto begin = std::chrono::steady_clock::now();
    const unsigned long long first = ticks();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const unsigned long long last = ticks();
    const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - begin;
    return elapsed.count() / static_cast<double>(last - first);
  }();
  return ratio;
}

}  // namespace bench
