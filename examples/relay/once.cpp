// Copies a centre's events.log from standard input to standard output, without the events that it has had before.
//
//   once <events.log >events-once.log
//
// An event is known by its stream and sequence, at the beginning of its line. A part of a line that a killed daemon
// left in front of another event is left out, as are lines without an event. What was left out is counted on standard
// error. Memory grows with the number of streams and of gaps in their sequences, some 100 bytes each, and not with the
// number of events. Exit status: 0, or 1 when not everything could be written.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <unordered_map>

namespace {

// The sequences that there have been, as ranges: first, and last of each.
class Sequences {
 public:
  /// False when it has been there before.
  bool insert(std::uint64_t sequence) {
    auto after = m_ranges.upper_bound(sequence);
    if (after != m_ranges.begin()) {
      const auto range = std::prev(after);
      if (sequence <= range->second) return false;
      if (sequence == range->second + 1) {
        range->second = sequence;
        joinNext(range, after);
        return true;
      }
    }
    joinNext(m_ranges.emplace_hint(after, sequence, sequence), after);
    return true;
  }

 private:
  using Ranges = std::map<std::uint64_t, std::uint64_t>;

  void joinNext(Ranges::iterator range, Ranges::iterator next) {
    if (next == m_ranges.end() || next->first != range->second + 1) return;
    range->second = next->second;
    m_ranges.erase(next);
  }

  Ranges m_ranges;
};

}  // namespace

int main() {
  // Quotes inside a value have a backslash before them, so this is nowhere but at the beginning of an event.
  static const std::string BEGIN = "{\"stream\":\"", BETWEEN = "\",\"sequence\":";
  std::ios::sync_with_stdio(false);
  std::unordered_map<std::string, Sequences> streams;
  std::uint64_t events = 0, repeated = 0, torn = 0;
  for (std::string line; std::getline(std::cin, line);) {
    const std::size_t begin = line.rfind(BEGIN), stream = begin + BEGIN.size();
    const std::size_t end = begin == line.npos ? line.npos : line.find(BETWEEN, stream);
    if (end == line.npos || line.back() != '}' || std::cin.eof()) {
      ++torn;
      continue;
    }
    if (begin != 0) ++torn;
    const std::uint64_t sequence = std::strtoull(line.c_str() + end + BETWEEN.size(), nullptr, 10);
    if (!streams[line.substr(stream, end - stream)].insert(sequence)) {
      ++repeated;
      continue;
    }
    ++events;
    std::cout.write(line.data() + begin, static_cast<std::streamsize>(line.size() - begin)).put('\n');
  }
  std::cout.flush();
  std::fprintf(stderr, "%llu events, %llu repetitions left out, %llu lines torn\n",
               static_cast<unsigned long long>(events), static_cast<unsigned long long>(repeated),
               static_cast<unsigned long long>(torn));
  return std::cout ? 0 : 1;
}
