// Shows what durable queues have left behind, and delivers it without their programs. docs/durable-queue.md says when.

#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "log4vrk/appenders/LOGFileAppender.h"
#include "log4vrk/appenders/internal/LOGRing.h"
#include "log4vrk/appenders/internal/LOGRingDelivery.h"
#include "log4vrk/appenders/internal/LOGRingFiles.h"
#include "log4vrk/appenders/internal/LOGRingRecovery.h"
#include "log4vrk/core/LOGAppenderAttachableImpl.h"
#include "log4vrk/layouts/LOGPatternLayout.h"
#include "log4vrk/platform/VRKFmDir.h"

namespace {

enum Status { DONE = 0, SOMETHING_LEFT = 1, WRONG_USE = 2 };

// For events that are not formatted yet, when the layout cannot be known.
constexpr const char* OTHERWISE = "%d{ISO8601} [%t] %p %c %x - %m%n";

constexpr const char* HELP = R"(usage: log4vrk-recover [--list] DIRECTORY
       log4vrk-recover --recover [--to FILE] DIRECTORY

Looks at the files (*.ring) that durable queues keep in DIRECTORY.

  --list      show each file: whose it is, and how much is in it. Changes nothing. This is the default.
  --recover   deliver what the files of ended programs hold to the log files that they name, and remove them
  --to FILE   the log file for events whose own is not known
  --help      show this

Exit status: 0 when there was nothing to deliver, or all of it has been; 1 when something is left; 2 for a wrong use.
)";

struct Options {
  bool recovers = false;
  std::string to, directory;
};

std::string timeOf(std::int64_t nanoseconds) {
  const auto seconds = static_cast<std::time_t>(nanoseconds / 1000000000);
  std::tm parts{};
  char text[32] = "?";
  if (::localtime_r(&seconds, &parts) != nullptr) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
  return text;
}

// What a file says may be anything, and goes to a terminal.
std::string shown(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '?';
  }
  return text;
}

std::string orUnknown(const std::string& text) { return text.empty() ? "not known" : shown(text); }

// Texts of a header end with a zero, unless they fill their place.
template <std::size_t size>
std::string textOf(const char (&text)[size]) {
  return shown({text, ::strnlen(text, size)});
}

// True when there is nothing to recover: the queue is in use, or empty.
bool show(const I18NString& path) {
  auto copy = std::make_unique<VRKMappedFile>();
  bool isOwned = false;
  std::printf("%s\n", path.toUtf8().c_str());
  if (!copy->copyOf(path, isOwned)) {
    std::printf("  cannot be read: %s\n", std::strerror(copy->getLastError()));
    return false;
  }
  LOGRing ring;
  std::string finding;
  const LOGRing::Condition condition = ring.open(std::move(copy), finding);
  if (!finding.empty()) std::printf("  %s\n", finding.c_str());
  if (condition == LOGRing::USELESS || condition == LOGRing::NEWER) return false;
  const LOGRingFormat::Header& header = ring.header();
  std::printf("  queue:    %s of %s, process %lld, begun %s, %s\n", textOf(header.name).c_str(),
              textOf(header.program).c_str(), static_cast<long long>(header.owner), timeOf(header.created).c_str(),
              isOwned ? "in use" : "without owner");
  std::printf("  log file: %s\n", orUnknown(ring.targetPath()).c_str());
  std::printf("  pattern:  %s\n", orUnknown(ring.targetPattern()).c_str());
  long events = 0, written = 0;
  while (ring.hasNext()) {
    ++(ring.position() < ring.written() ? written : events);
    ring.get();
  }
  LOGRing::Pending pending;
  std::string damage;
  const bool isPending = ring.pending(pending, damage);
  std::printf("  holds:    %ld events, and %ld that the log file has", events, written);
  if (isPending) std::printf("; %zu bytes were being written to it", pending.lines.size());
  std::printf("\n");
  if (!damage.empty()) std::printf("  %s\n", damage.c_str());
  if (ring.damaged() > 0) std::printf("  damaged:  %llu events\n", static_cast<unsigned long long>(ring.damaged()));
  return isOwned || (events == 0 && !isPending);
}

bool recover(LOGRingRecovery& recovery, LOGRingRecovery::Left& left, const Options& options) {
  const std::string path = left.ring->file().path().toUtf8();
  const std::string known = left.ring->targetPath();
  const std::string log = known.empty() ? options.to : known;
  if (log.empty()) {
    std::fprintf(stderr, "log4vrk-recover: %s: its log file is not known; name one with --to\n", path.c_str());
    return false;
  }
  if (!recovery.completeLines(left)) return false;
  std::string pattern = left.ring->targetPattern();
  if (pattern.empty() && left.ring->hasNext()) {
    std::fprintf(stderr, "log4vrk-recover: %s: its layout is not known, so its events look like \"%s\"\n", path.c_str(),
                 OTHERWISE);
  }
  if (pattern.empty()) pattern = OTHERWISE;
  LOGPatternLayout layout{I18NString(std::string_view(pattern))};
  LOGFileAppender file(&layout, I18NString(std::string_view(log)));
  const auto container = std::make_shared<LOGAppenderAttachableImpl>();
  container->addAppender(&file);
  LOGRingDelivery delivery(container);
  const bool ready = delivery.isReady();
  const bool whole = ready && recovery.deliver(left, delivery);
  if (!ready) std::fprintf(stderr, "log4vrk-recover: %s: cannot be opened\n", log.c_str());
  container->removeAppender(&file);
  if (ready) std::printf("%s: delivered to %s\n", path.c_str(), log.c_str());
  return whole;
}

// The status, or -1 to go on.
int parse(int argc, char** argv, Options& options) {
  static constexpr option LONG[] = {{"list", no_argument, nullptr, 'l'},
                                    {"recover", no_argument, nullptr, 'r'},
                                    {"to", required_argument, nullptr, 't'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {}};
  for (int chosen; (chosen = ::getopt_long(argc, argv, "", LONG, nullptr)) != -1;) {
    if (chosen == 'l') options.recovers = false;
    if (chosen == 'r') options.recovers = true;
    if (chosen == 't') options.to = optarg;
    if (chosen == 'h') std::fputs(HELP, stdout);
    if (chosen == 'h') return DONE;
    if (chosen == '?') return WRONG_USE;
  }
  if (optind + 1 != argc) {
    std::fputs(HELP, stderr);
    return WRONG_USE;
  }
  options.directory = argv[optind];
  return -1;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (const int status = parse(argc, argv, options); status >= 0) return status;
  ::setenv("LOG4VRK_INTERNAL_LOG", "stderr", 0);  // where the library says what it finds
  const I18NString directory{std::string_view(options.directory)};
  if (!VRKFmDir::exists(directory, VRKFmDir::DIRECTORY)) {
    std::fprintf(stderr, "log4vrk-recover: %s: no such directory\n", options.directory.c_str());
    return WRONG_USE;
  }
  bool nothingLeft = true;
  if (options.recovers) {
    LOGRingRecovery recovery("log4vrk-recover: ");
    LOGRingFiles::removeUnfinished(directory);
    for (const auto& left : recovery.openAll(LOGRingFiles::in(directory))) {
      nothingLeft &= recover(recovery, *left, options);
    }
    nothingLeft &= recovery.unreadable() == 0;
  } else {
    for (const I18NString& path : LOGRingFiles::in(directory)) nothingLeft &= show(path);
  }
  return nothingLeft ? DONE : SOMETHING_LEFT;
}
