#include "log4vrk/appenders/internal/LOGRingFiles.h"

#include "log4vrk/appenders/internal/LOGQueueHeader.h"
#include "log4vrk/platform/VRKFmDir.h"
#include "log4vrk/platform/internal/VRKErrorText.h"
#include "log4vrk/platform/internal/VRKProcess.h"

namespace {

constexpr const char *DAMAGED = ".damaged", *UNFINISHED = ".new-";
constexpr std::size_t LONGEST_NAME = 120;  // with the numbers it has to be a file name
constexpr int MOST_ATTEMPTS = 10000;

// A name of a file that says which queue it is, whatever that is called.
std::string encoded(const std::string& name) {
  static constexpr char DIGITS[] = "0123456789abcdef";
  std::string text;
  for (const char c : name) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
                       c == '-' || (c == '.' && !text.empty());
    if (plain) {
      text += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      (text += '%').append(1, DIGITS[byte / 16]).append(1, DIGITS[byte % 16]);
    }
  }
  if (text.empty()) text = "%";
  if (text.size() <= LONGEST_NAME) return text;
  return text.substr(0, LONGEST_NAME) + "%" + std::to_string(LOGQueueHeader::sumOf(name.data(), name.size()));
}

// Without ending and numbers; empty when it is no name of a queue's file.
std::string queueOf(const std::string& file, const std::string& ending) {
  if (file.size() <= ending.size() || file.substr(file.size() - ending.size()) != ending) return {};
  std::string name = file.substr(0, file.size() - ending.size());
  for (int number = 0; number < 2; ++number) {
    const std::size_t dash = name.rfind('-');
    if (dash == name.npos || dash + 1 == name.size() || name.find_first_not_of("0123456789", dash + 1) != name.npos) {
      return {};
    }
    name.resize(dash);
  }
  return name;
}

I18NString pathOf(const I18NString& directory, const std::string& file) {
  return directory + "/" + I18NString(std::string_view(file));
}

// What lies in any other directory anybody may have put there. A missing one is not made.
bool isOurs(const I18NString& directory) {
  return VRKFmDir::exists(directory, VRKFmDir::DIRECTORY) && VRKMappedFile::objectionTo(directory).empty();
}

template <typename Wanted>
std::vector<I18NString> queuesIn(const I18NString& directory, const char* ending, Wanted wanted) {
  std::vector<I18NString> paths;
  for (const I18NString& each : VRKFmDir::list(directory)) {
    const std::string name = each.toUtf8();
    const std::string queue = queueOf(name, ending);
    if (!queue.empty() && wanted(queue)) paths.push_back(pathOf(directory, name));
  }
  return paths;
}

}  // namespace

std::vector<I18NString> LOGRingFiles::defaultDirectories() {
  std::vector<I18NString> all;
  const std::string runtime = VRKProcess::environment("XDG_RUNTIME_DIR");
  const bool exists = !runtime.empty() && runtime[0] == '/' &&
                      VRKFmDir::exists(I18NString(std::string_view(runtime)), VRKFmDir::DIRECTORY);
  if (exists) all.emplace_back(std::string_view(runtime + "/log4vrk"));
  all.emplace_back(std::string_view("/dev/shm/log4vrk-" + std::to_string(VRKProcess::userId())));
  return all;
}

std::vector<I18NString> LOGRingFiles::in(const I18NString& directory, const std::string& name, const char* ending) {
  if (!isOurs(directory)) return {};
  return queuesIn(directory, ending, [&, wanted = encoded(name)](const std::string& queue) { return queue == wanted; });
}

std::vector<I18NString> LOGRingFiles::in(const I18NString& directory) {
  return queuesIn(directory, RING, [](const std::string&) { return true; });
}

void LOGRingFiles::removeUnfinished(const I18NString& directory) {
  if (!isOurs(directory)) return;
  for (const I18NString& name : VRKFmDir::list(directory)) {
    VRKMappedFile file;
    if (name.startsWith(UNFINISHED) && file.openFree(directory + "/" + name) == VRKMappedFile::OPENED) file.remove();
  }
}

// It gets its name when it is complete: before, whoever recovers might find it half-way, and without an owner.
std::unique_ptr<VRKMappedFile> LOGRingFiles::make(const I18NString& directory, const std::string& name,
                                                  std::size_t bytes, const std::function<void(VRKMappedFile&)>& begin,
                                                  std::string& why, const char* ending) {
  why = VRKMappedFile::objectionTo(directory);
  if (!why.empty()) return nullptr;
  const std::string numbers = std::to_string(VRKProcess::id()) + "-";
  for (int attempt = 0; attempt < MOST_ATTEMPTS; ++attempt) {
    const std::string number = numbers + std::to_string(attempt);
    const I18NString path = pathOf(directory, encoded(name) + "-" + number + ending);
    if (VRKFmDir::exists(path, VRKFmDir::REGULAR_FILE)) continue;
    auto file = std::make_unique<VRKMappedFile>();
    const VRKMappedFile::Result result = file->create(pathOf(directory, UNFINISHED + number), bytes);
    if (result == VRKMappedFile::OWNED_OR_GONE) continue;
    if (result == VRKMappedFile::OPENED) {
      begin(*file);
      if (file->rename(path)) return file;
      file->remove();
    }
    why = "no room for " + std::to_string(bytes) + " bytes: " + vrkErrorText(file->getLastError());
    return nullptr;
  }
  why = "there are too many files";
  return nullptr;
}

I18NString LOGRingFiles::setAside(VRKMappedFile& file) {
  const I18NString before = file.path();
  for (int attempt = 0; attempt < MOST_ATTEMPTS; ++attempt) {
    I18NString path = before + (attempt > 0 ? "." + std::to_string(attempt) : std::string()).c_str() + DAMAGED;
    if (VRKFmDir::exists(path, VRKFmDir::REGULAR_FILE)) continue;
    if (file.rename(path)) return path;
    break;
  }
  return I18NString();
}
