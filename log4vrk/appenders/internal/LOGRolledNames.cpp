#include "log4vrk/appenders/internal/LOGRolledNames.h"

#include <algorithm>
#include <utility>

#include "log4vrk/platform/VRKFmDir.h"
#include "log4vrk/platform/internal/VRKCompressedFile.h"

namespace {

constexpr char UNFINISHED[] = ".tmp";

bool takeEnd(std::string_view& text, std::string_view end) {
  if (text.size() < end.size() || text.substr(text.size() - end.size()) != end) return false;
  text.remove_suffix(end.size());
  return true;
}

// The number as path() writes it, behind a point.
bool readNumber(std::string_view text, long& number) {
  constexpr std::size_t MOST_DIGITS = 9;
  number = 0;
  if (text.empty()) return true;
  if (text.size() < 2 || text.size() > MOST_DIGITS + 1 || text[0] != '.' || text[1] == '0') return false;
  for (const char c : text.substr(1)) {
    if (c < '0' || c > '9') return false;
    number = 10 * number + (c - '0');
  }
  return true;
}

// In this order: what is compressed gets its new name before it loses the other.
bool isInUse(const std::string& path) {
  return VRKFileFacts::isInUse(path) || VRKFileFacts::isInUse(path + ".gz") || VRKFileFacts::isInUse(path + ".zst");
}

}  // namespace

LOGRolledNames::LOGRolledNames(std::string path, LOGRollCalendar calendar)
    : m_path(std::move(path)), m_calendar(std::move(calendar)) {
  const std::size_t slash = m_path.rfind('/');
  m_directory = slash == m_path.npos ? "" : m_path.substr(0, slash + 1);
  m_name = slash == m_path.npos ? m_path : m_path.substr(slash + 1);
}

bool LOGRolledNames::read(std::string_view name, LOGRolledFile& file) const {
  if (name.substr(0, m_name.size()) != m_name) return false;
  const bool isUnfinished = takeEnd(name, UNFINISHED);
  file.isPlain = !isUnfinished;
  for (const auto format : {VRKCompressor::GZIP, VRKCompressor::ZSTD}) {
    if (!file.isPlain && !isUnfinished) break;
    if (!takeEnd(name, VRKCompressedFile::ending(format))) continue;
    file.isPlain = false;
    (isUnfinished ? file.isUnfinished : file.isCompressed)[format] = true;
    break;
  }
  file.path = m_directory + std::string(name);
  std::string_view rest = name.substr(m_name.size());
  return m_calendar.takeLabel(rest, file.begin) && readNumber(rest, file.number);
}

std::vector<LOGRolledFile> LOGRolledNames::list() const {
  std::vector<LOGRolledFile> files;
  for (const I18NString& each : VRKFmDir::list(I18NString(m_directory))) {
    LOGRolledFile file;
    if (read(each.toUtf8(), file)) files.push_back(std::move(file));
  }
  std::sort(files.begin(), files.end());
  std::vector<LOGRolledFile> merged;
  for (LOGRolledFile& file : files) {
    if (merged.empty() || merged.back() < file) {
      merged.push_back(std::move(file));
      continue;
    }
    LOGRolledFile& same = merged.back();
    same.isPlain = same.isPlain || file.isPlain;
    for (int format = 0; format < 2; ++format) {
      same.isCompressed[format] = same.isCompressed[format] || file.isCompressed[format];
      same.isUnfinished[format] = same.isUnfinished[format] || file.isUnfinished[format];
    }
  }
  return merged;
}

// The last number and not the first free one: what has been removed must not come again behind what is newer.
std::string LOGRolledNames::next(std::int64_t begin) const {
  long number = 0;
  for (const LOGRolledFile& file : list()) {
    if (file.begin == begin) number = file.number + 1;
  }
  while (isInUse(path(begin, number))) ++number;
  return path(begin, number);
}

std::string LOGRolledNames::path(std::int64_t begin, long number) const {
  return m_path + m_calendar.label(begin) + (number > 0 ? "." + std::to_string(number) : "");
}
