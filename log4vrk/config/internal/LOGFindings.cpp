#include "log4vrk/config/internal/LOGFindings.h"

#include <algorithm>
#include <numeric>

namespace {

std::string lower(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view BLANKS = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(BLANKS);
  return begin == text.npos ? std::string_view() : text.substr(begin, text.find_last_not_of(BLANKS) - begin + 1);
}

// How many letters have to be put in, taken out, replaced or exchanged with their neighbour.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before, last(b.size() + 1), row(b.size() + 1);
  std::iota(last.begin(), last.end(), 0);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      const bool isExchange = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (isExchange) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before = last;
    last = row;
  }
  return last[b.size()];
}

}  // namespace

bool LOGFindings::isNumber(std::string_view text) {
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
  return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

std::string logNearest(std::string_view text, const std::vector<std::string>& words) {
  constexpr std::size_t LONGEST = 64;  // longer texts are no slips of the hand, and would take long
  const std::string_view meant = trimmed(text);
  if (meant.empty() || meant.size() > LONGEST) return {};
  const std::string small = lower(meant);
  std::string nearest;
  std::size_t least = std::max<std::size_t>(1, meant.size() / 3) + 1;
  for (const std::string& word : words) {
    if (word.size() > LONGEST || word == text) continue;
    const std::string other = lower(word);
    // An ending too many or too few is no more than one slip.
    const std::size_t shorter = std::min(small.size(), other.size());
    const bool isPrefix = shorter > 2 && small.compare(0, shorter, other, 0, shorter) == 0 && small != other;
    const std::size_t steps = isPrefix ? 1 : distance(small, other);
    if (steps >= least) continue;
    least = steps;
    nearest = word;
  }
  return nearest;
}
